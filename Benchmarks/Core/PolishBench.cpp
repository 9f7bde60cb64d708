// Auto Polish of an hour, and the cost of resolving the camera. Prints one line a figure: name, value, unit.

#include <TavaroCore/Direction/SmartDirector.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Zoom/LoupeResolver.h>
#include <TavaroCore/Zoom/ZoomResolver.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <new>
#include <random>

#include <fmt/format.h>

using namespace tavaro;

namespace {

long allocations = 0; // one thread

}

// Counts each allocation of the program; kept from inlining, so that the compiler sees no mismatched pair.
[[gnu::noinline]] void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size > 0 ? size : 1)) return memory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace {

constexpr double takeSeconds = 3600;
constexpr int samplesPerSecond = 60;
constexpr int clickCount = 2000;

/// An hour of work: a wandering pointer, clicks, typing, and an edit that cut the pauses.
DemoProject hour() {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> unit(0, 1);
    DemoProject project;
    auto& recording = project.metadata.edit();
    UnitPoint2 pointer = UnitPoint2::center;
    for (int i = 0; i < static_cast<int>(takeSeconds) * samplesPerSecond; ++i) {
        pointer =
            UnitPoint2{pointer.x + 0.02 * (unit(random) - 0.5), pointer.y + 0.02 * (unit(random) - 0.5)}.clamped();
        recording.cursorSamples.push_back({static_cast<double>(i) / samplesPerSecond, pointer});
    }
    for (int i = 0; i < clickCount; ++i) {
        double const t = takeSeconds * unit(random);
        recording.clicks.push_back({.t = t,
                                    .position = {unit(random), unit(random)},
                                    .isDrag = i % 10 == 0,
                                    .application = "Text Editor",
                                    .windowFrame = NormalizedRect{0.1, 0.1, 0.3 + 0.5 * unit(random), 0.5}});
        recording.keystrokes.push_back({.t = t + 1, .keys = {"a"}});
    }
    auto const earlier = [](auto const& a, auto const& b) { return a.t < b.t; };
    std::sort(recording.clicks.begin(), recording.clicks.end(), earlier);
    std::sort(recording.keystrokes.begin(), recording.keystrokes.end(), earlier);
    for (int i = 0; i < 300; ++i) {
        project.timeline.clips.push_back(
            {.asset = "screen.mp4", .start = i * 11.0, .sourceStart = i * 12.0, .duration = 11});
    }
    return project;
}

double medianMilliseconds(int runs, auto prepare, auto measured) {
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        auto input = prepare();
        auto const start = std::chrono::steady_clock::now();
        measured(input);
        times.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    std::nth_element(times.begin(), times.begin() + runs / 2, times.end());
    return times[static_cast<std::size_t>(runs) / 2];
}

}

int main() {
    auto const take = hour();
    SmartDirector const director({}, DemoMode::website);
    DirectorReport report;
    auto polished = take;
    // Each run starts from a copy that shares the log, as an edit with undo does, so copying the log is part of it.
    double const hourMilliseconds = medianMilliseconds(
        9, [&] { return take; }, [&](DemoProject& project) { report = director.polish(project), polished = project; });
    fmt::print("polish.hour {:.1f} ms\n", hourMilliseconds);
    double const againMilliseconds = medianMilliseconds(
        9, [&] { return polished; }, [&](DemoProject& project) { report = director.polish(project); });
    fmt::print("polish.hour.again {:.1f} ms\n", againMilliseconds);
    fmt::print("polish.hour.zooms {} zooms\n", report.zoomsAdded);

    UnitPoint2 const target{0.3, 0.3};
    auto const follow = [&](ZoomEvent const& event, double) { return event.followsCursor ? target : event.center; };
    constexpr int frames = 3600;
    double sum = 0; // keeps the work from being left out
    long const before = allocations;
    auto const start = std::chrono::steady_clock::now();
    for (int i = 0; i < frames; ++i) {
        double const t = i * takeSeconds / frames;
        sum += ZoomResolver::resolveWithVelocity(polished.zoomEvents, t, 1.0 / 60, follow).velocity;
        sum += LoupeResolver::resolve(polished.zoomEvents, t, follow).has_value();
    }
    double const elapsed = std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
    fmt::print("resolve {} allocations\n", allocations - before);
    fmt::print("resolve.frame {:.2f} us\n", elapsed / frames);
    return sum >= 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
