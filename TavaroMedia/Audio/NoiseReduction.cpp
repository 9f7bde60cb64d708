#include <TavaroMedia/Audio/NoiseReduction.h>

#include <algorithm>
#include <array>
#include <new>

#include <webrtc/modules/audio_processing/include/audio_processing.h>
#include <webrtc/modules/interface/module_common_types.h>

namespace tavaro {

namespace {

constexpr std::size_t frameSamples = audioRate / 100; // the suppressor works on 10 ms

// The suppressor's bands and its overlapping windows hold the sound back by so many samples; measured, and checked by a
// test.
constexpr std::size_t suppressorDelay = 337;

// The suppressor needs a while to learn the noise; it hears this much of the beginning before it starts.
constexpr std::size_t lessonSamples = 2 * audioRate;

webrtc::NoiseSuppression::Level levelFor(double strength) {
    if (strength < 0.4) return webrtc::NoiseSuppression::kModerate;
    return strength < 0.85 ? webrtc::NoiseSuppression::kHigh : webrtc::NoiseSuppression::kVeryHigh;
}

}

struct NoiseReduction::State {
    State(double strength, int channelCount)
        : channels(channelCount)
        , wet(static_cast<float>(1 - (1 - strength) * (1 - strength)))
        , processing(webrtc::AudioProcessing::Create())
        , format(audioRate, channelCount) {
        if (!processing) throw std::bad_alloc();
        processing->noise_suppression()->set_level(levelFor(strength));
        processing->noise_suppression()->Enable(true);
    }

    int const channels;
    float const wet; // share of the cleaned sound; what is left of the original keeps the voice natural
    std::unique_ptr<webrtc::AudioProcessing> const processing;
    webrtc::StreamConfig const format;
    std::vector<StereoSample> waiting;  // less than a frame, or the lesson
    std::vector<StereoSample> original; // what went in and did not come out yet
    std::size_t toDrop = suppressorDelay;
    bool hasLearned = false;

    /// Cleans one frame in place.
    void clean(std::span<StereoSample> frame);
    void learn();
    void emit(std::span<StereoSample const> cleaned, std::vector<StereoSample>& out);
    void run(std::vector<StereoSample>& out);
};

void NoiseReduction::State::clean(std::span<StereoSample> frame) {
    std::array<float, frameSamples> left;
    std::array<float, frameSamples> right;
    std::ranges::transform(frame, left.begin(), &StereoSample::left);
    std::ranges::transform(frame, right.begin(), &StereoSample::right);
    std::array<float*, 2> const sides{left.data(), right.data()};
    processing->ProcessStream(sides.data(), format, format, sides.data());
    auto const& other = channels == 1 ? left : right;
    for (std::size_t i = 0; i < frameSamples; ++i) frame[i] = {left[i], other[i]};
}

/// The beginning backwards, so that it leads into itself without a break.
void NoiseReduction::State::learn() {
    hasLearned = true;
    std::vector<StereoSample> lesson(waiting.rbegin(), waiting.rend());
    auto const surplus = lesson.size() % frameSamples;
    for (std::size_t at = surplus; at < lesson.size(); at += frameSamples)
        clean(std::span(lesson).subspan(at, frameSamples));
}

void NoiseReduction::State::emit(std::span<StereoSample const> cleaned, std::vector<StereoSample>& out) {
    auto const dropped = std::min(toDrop, cleaned.size());
    toDrop -= dropped;
    cleaned = cleaned.subspan(dropped);
    auto const count = std::min(cleaned.size(), original.size());
    auto const mixed = [this](float before, float after) { return before + wet * (after - before); };
    for (std::size_t i = 0; i < count; ++i)
        out.push_back({mixed(original[i].left, cleaned[i].left), mixed(original[i].right, cleaned[i].right)});
    original.erase(original.begin(), original.begin() + static_cast<std::ptrdiff_t>(count));
}

void NoiseReduction::State::run(std::vector<StereoSample>& out) {
    std::size_t done = 0;
    for (; waiting.size() - done >= frameSamples; done += frameSamples) {
        auto const frame = std::span(waiting).subspan(done, frameSamples);
        clean(frame);
        emit(frame, out);
    }
    waiting.erase(waiting.begin(), waiting.begin() + static_cast<std::ptrdiff_t>(done));
}

NoiseReduction::NoiseReduction(double strength, int channels)
    : state_(std::make_unique<State>(std::clamp(strength, 0.0, 1.0), channels)) {}
NoiseReduction::NoiseReduction(NoiseReduction&&) noexcept = default;
NoiseReduction& NoiseReduction::operator=(NoiseReduction&&) noexcept = default;
NoiseReduction::~NoiseReduction() = default;

void NoiseReduction::process(std::span<StereoSample const> samples, std::vector<StereoSample>& out) {
    auto& state = *state_;
    state.waiting.insert(state.waiting.end(), samples.begin(), samples.end());
    state.original.insert(state.original.end(), samples.begin(), samples.end());
    if (!state.hasLearned) {
        if (state.waiting.size() < lessonSamples) return;
        state.learn();
    }
    state.run(out);
}

void NoiseReduction::finish(std::vector<StereoSample>& out) {
    auto& state = *state_;
    if (state.original.empty()) return;
    if (!state.hasLearned) state.learn();
    state.run(out);
    // Silence pushes the rest out.
    auto const missing = state.original.size() + suppressorDelay + frameSamples;
    state.waiting.resize(state.waiting.size() + missing);
    state.run(out);
    state.waiting.clear();
}

}
