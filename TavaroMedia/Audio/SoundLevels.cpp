#include <TavaroMedia/Audio/SoundLevels.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include <TavaroMedia/Audio/AudioReader.h>

namespace tavaro {

namespace {

constexpr std::size_t blockWindows = 50;
constexpr float decimals = 1e4f;

float levelOf(std::span<StereoSample const> samples) {
    float left = 0;
    float right = 0;
    for (auto const& sample : samples) {
        left += sample.left * sample.left;
        right += sample.right * sample.right;
    }
    return std::sqrt(std::max(left, right) / static_cast<float>(std::max<std::size_t>(samples.size(), 1)));
}

}

float soundLevel(std::span<StereoSample const> samples) {
    float const level = levelOf(samples);
    return std::isfinite(level) ? std::round(level * decimals) / decimals : 0;
}

std::vector<float> soundLevels(std::filesystem::path const& file, LevelSpan const& span,
                               std::function<void(double)> const& progress) {
    std::vector<float> levels(span.entries);
    AudioReader reader(file);
    std::int64_t const start = std::llround(span.start * audioRate);
    std::int64_t const length = std::llround(span.seconds * audioRate);
    double const perEntry = static_cast<double>(length) / static_cast<double>(std::max<std::size_t>(span.entries, 1));
    auto const entryOf = [&](std::int64_t sample) {
        auto const entry = static_cast<std::size_t>(static_cast<double>(sample) / perEntry);
        return std::min(entry, levels.size() - 1);
    };
    std::vector<StereoSample> block(levelWindow * blockWindows);
    for (std::int64_t at = 0; at < length && !levels.empty(); at += std::ssize(block)) {
        if (progress) progress(static_cast<double>(at) / static_cast<double>(length));
        block.resize(static_cast<std::size_t>(std::min(std::ssize(block), length - at)));
        if (reader.read(start + at, block) == 0 && start + at >= 0) break; // silent to the end
        for (std::size_t from = 0; from < block.size(); from += levelWindow) {
            auto const window = std::span(block).subspan(from, std::min(levelWindow, block.size() - from));
            auto const begin = at + static_cast<std::int64_t>(from);
            auto const level = soundLevel(window);
            for (auto entry = entryOf(begin); entry <= entryOf(begin + std::ssize(window) - 1); ++entry)
                levels[entry] = std::max(levels[entry], level);
        }
    }
    return levels;
}

}
