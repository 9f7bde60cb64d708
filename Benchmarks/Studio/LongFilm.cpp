#include <Benchmarks/Studio/LongFilm.h>

#include <algorithm>
#include <cstddef>
#include <string>

#include <time.h>

namespace tavaro {

DemoProject longFilm(double hours) {
    DemoProject project;
    double const seconds = hours * 3600;
    project.assetDurations["screen.mp4"] = seconds;
    int const items = static_cast<int>(5000 * hours / 3), clips = static_cast<int>(200 * hours / 3);
    for (int i = 0; i < clips; ++i) {
        double const start = seconds * i / clips;
        project.timeline.clips.push_back(
            {.asset = "screen.mp4", .start = start, .sourceStart = start, .duration = seconds / clips});
    }
    for (int i = 0; i < items; ++i) {
        double const start = seconds * i / items;
        project.zoomEvents.push_back({.start = start, .duration = 1.7, .note = "clicked"});
        CaptionCue cue{.start = start, .duration = 2, .text = "what is said in line " + std::to_string(i)};
        for (int word = 0; word < 6; ++word)
            cue.words.push_back({"word", start + word * 0.3, start + word * 0.3 + 0.3});
        project.captions.cues.push_back(std::move(cue));
    }
    return project;
}

double threadSeconds(std::function<void()> const& work) {
    auto const now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    };
    double const begin = now();
    work();
    return now() - begin;
}

double percentile(std::vector<double> values, double share) {
    if (values.empty()) return 0;
    std::ranges::sort(values);
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

}
