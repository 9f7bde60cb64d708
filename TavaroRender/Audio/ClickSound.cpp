#include <TavaroRender/Audio/Private/ClickSound.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

#include <TavaroMedia/Audio/AudioFileWriter.h>

namespace tavaro {

namespace {

constexpr int count = audioRate * 7 / 100;

std::vector<float> synthesised() {
    constexpr double turn = 2 * std::numbers::pi;
    std::vector<double> values;
    std::uint32_t random = 0x9E3779B9;
    double smooth = 0;
    double peak = 1e-6;
    for (int n = 0; n < count; ++n) {
        double const t = static_cast<double>(n) / audioRate;
        random ^= random << 13;
        random ^= random >> 17;
        random ^= random << 5;
        double const white = 2 * (static_cast<double>(random) / 0xFFFFFFFFu) - 1;
        smooth += (white - smooth) * 0.35;
        double const tick = std::sin(turn * 3100 * t) * std::exp(-t / 0.0045);
        double const noise = smooth * std::exp(-t / 0.0025);
        double const thump = std::sin(turn * 170 * t) * std::exp(-t / 0.011);
        values.push_back(std::min(t / 0.001, 1.0) * (0.5 * thump + 0.45 * tick + 0.55 * noise));
        peak = std::max(peak, std::abs(values.back()));
    }
    std::vector<float> samples;
    for (double const value : values) samples.push_back(static_cast<float>(value * 0.6 / peak));
    return samples;
}

}

std::vector<float> const& ClickSound::samples() {
    static std::vector<float> const made = synthesised();
    return made;
}

std::filesystem::path ClickSound::ensureFile(std::filesystem::path const& folder) {
    auto const file = folder / "click-sound-v1.caf";
    std::error_code ignored;
    if (std::filesystem::exists(file, ignored)) return file;
    std::filesystem::create_directories(folder, ignored);
    std::vector<StereoSample> sound;
    for (float const value : samples()) sound.push_back({value, value});
    AudioFileWriter writer(file, AudioFileFormat::floats, 1);
    writer.append(sound);
    writer.finish();
    return file;
}

}
