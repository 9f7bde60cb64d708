#include "VoiceoverBench.h"

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroVoice/Voiceover/Placement.h>
#include <TavaroVoice/Voiceover/SpokenPlan.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <filesystem>

#include <fmt/format.h>
#include <unistd.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

constexpr int lineCount = 2000;

/// A second of a tone, whatever the text.
class QuickSpeaker : public Speaker {
public:
    explicit QuickSpeaker(std::atomic<int>& asked) : asked_(asked) {}
    std::vector<Voice> voices() override { return {}; }
    Speech speak(std::string const&, VoiceSettings const&, std::stop_token const&) override {
        ++asked_;
        Speech speech;
        for (int n = 0; n < 48'000; ++n) speech.samples.push_back(0.3f * std::sin(static_cast<float>(n) * 0.06f));
        return speech;
    }

private:
    std::atomic<int>& asked_;
};

double milliseconds(auto work) {
    auto const start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

DemoProject longFilm() {
    DemoProject project;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 1.5 * lineCount}};
    auto& plan = project.voiceover.emplace();
    plan.voice.voiceID = "system:quick";
    for (int i = 0; i < lineCount; ++i)
        plan.segments.push_back({.text = fmt::format("Line {} of many.", i), .anchor = 1.5 * i});
    return project;
}

/// A folder that goes with this.
struct Scratch {
    fs::path const folder = fs::temp_directory_path() / fmt::format("tavaro-bench-voiceover-{}", getpid());
    Scratch() { fs::create_directories(folder); }
    ~Scratch() { fs::remove_all(folder); }
};

}

void benchVoiceover() {
    Scratch const scratch;
    std::atomic<int> asked = 0;
    auto project = longFilm();
    auto const generate = [&] {
        auto const& plan = *project.voiceover;
        takeIn(project, speakLines({.lines = linesToSpeak(plan, plan.voice),
                                    .voice = plan.voice,
                                    .assets = scratch.folder,
                                    .speakers = [&] { return std::make_unique<QuickSpeaker>(asked); }},
                                   {}));
    };
    double const first = milliseconds(generate);
    fmt::print("voiceover.line {:.2f} ms\n", first / lineCount);
    asked = 0;
    project.voiceover->segments[1000] = {.text = "A line that was changed.", .anchor = 1500};
    double const again = milliseconds(generate);
    fmt::print("voiceover.regenerate.lines {} lines\n", asked.load());
    fmt::print("voiceover.regenerate {:.2f} ms\n", again);
    fmt::print("voiceover.place {:.2f} ms\n", milliseconds([&] { placeVoiceover(project); }));
    for (auto& segment : project.voiceover->segments) segment.audioDuration = 2;
    project.voiceover->stretchesVideoToFit = true;
    fmt::print("voiceover.place.held {:.0f} ms\n", milliseconds([&] { placeVoiceover(project); }));
    for (auto& segment : project.voiceover->segments) segment = {.text = segment.text, .anchor = segment.anchor};
    asked = 0;
    fmt::print("voiceover.found_again {:.0f} ms\n", milliseconds(generate));
    fmt::print("voiceover.found_again.lines {} lines\n", asked.load());
}

}
