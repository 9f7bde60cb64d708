#include <Tavaro/Studio/Playback/SoundSample.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroMedia/Audio/AudioReader.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <vector>

namespace tavaro {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto openingPatience = 5s, endPatience = 3s;

std::vector<StereoSample> samplesOf(std::filesystem::path const& file) {
    AudioReader reader(file);
    auto const most = static_cast<std::size_t>(SoundSample::mostSeconds * 48'000);
    std::vector<StereoSample> samples(most);
    samples.resize(reader.read(0, samples));
    return samples;
}

}

SoundSample::SoundSample(std::function<std::unique_ptr<SoundOutput>()> makeOutput,
                         std::function<void(std::string const&)> ended)
    : makeOutput_(std::move(makeOutput))
    , ended_(std::move(ended)) {}

SoundSample::~SoundSample() { stop(); }

void SoundSample::play(std::filesystem::path const& file) {
    queue_.async([this, file, number = ++newest_] { perform(file, number); });
}

void SoundSample::stop() { ++newest_; }

void SoundSample::perform(std::filesystem::path const& file, std::uint64_t number) {
    std::string problem;
    try {
        auto const samples = samplesOf(file);
        auto const output = makeOutput_();
        if (isWanted(number)) problem = heard(*output, samples, number);
        output->close();
    } catch (Error const& error) {
        problem = error.what();
    }
    if (isWanted(number)) ended_(problem);
}

/// Until its last sample was heard; where the device does not tell, until it must have been.
std::string SoundSample::heard(SoundOutput& output, std::span<StereoSample const> samples, std::uint64_t number) {
    static constexpr std::array<StereoSample, 4800> silence{};
    output.open();
    for (auto const begun = Clock::now(); output.state() == SoundOutput::State::opening && isWanted(number);) {
        if (Clock::now() - begun > openingPatience) return "The sound cannot be played: no device answers.";
        output.run(20ms);
    }
    auto const seconds = std::chrono::duration<double>(static_cast<double>(samples.size()) / 48'000);
    auto const last = Clock::now() + std::chrono::duration_cast<Clock::duration>(seconds) + endPatience;
    for (std::size_t written = 0; isWanted(number) && Clock::now() < last;) {
        if (output.state() != SoundOutput::State::ready) return "The sound cannot be played: " + output.reason() + ".";
        auto const rest = written < samples.size() ? samples.subspan(written) : std::span<StereoSample const>(silence);
        auto const next = rest.first(std::min(rest.size(), output.room()));
        if (!next.empty()) output.write(next);
        written += next.size();
        if (output.heard().value_or(0) >= static_cast<double>(samples.size())) break;
        output.run(20ms);
    }
    return {};
}

}
