#include "CodingSession.h"

#include <Benchmarks/Render/Measured.h>
#include <Tests/Vision/Corpus/ScreenScenes.h>

#include <TavaroVision/Scanning/PrivacyScan.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string_view>

#include <unistd.h>

namespace tavaro {

namespace {

/// A part of the session: a scene, at some speed, after which nothing moves for a while.
struct Stage {
    ScreenScene scene;
    double speed = 1;
    double rest = 0; // seconds
    double length() const { return scene.seconds / speed + rest; }
};

std::vector<Stage> stagesOf(double seconds) {
    std::vector<Stage> stages;
    double planned = 0;
    for (std::uint32_t seed = 10; planned < seconds; ++seed) {
        SceneLook look{.name = "session", .colors = seed % 3 == 0 ? lightColors : darkColors, .fps = 60, .seed = seed};
        auto const add = [&](ScreenScene (*make)(SceneLook const&), double length, double speed, double rest) {
            look.seconds = length;
            stages.push_back({make(look), speed, rest});
            planned += stages.back().length();
        };
        add(typingScene, 14, 0.5, 4); // seven letters a second
        add(switchingScene, 4, 0.4, 3);
        add(printingScene, 8, 1, 5);
        add(scrollingScene, 10, 1, 4);
        add(typingScene, 10, 0.5, 5);
        if (seed % 2 == 0) add(movingScene, 6, 1, 4);
    }
    return stages;
}

struct Mebibytes {
    double own = 0;
    double readers = 0;
};

double privateMebibytes(std::string const& process) {
    std::ifstream file("/proc/" + process + "/smaps_rollup");
    double kibibytes = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("Private_")) kibibytes += std::stod(line.substr(line.find(':') + 1));
    }
    return kibibytes / 1024;
}

/// Of this program and of those that its threads started.
Mebibytes memoryNow() {
    Mebibytes memory{privateMebibytes("self"), 0};
    for (auto const& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream children(thread.path() / "children");
        for (std::string child; children >> child;) memory.readers += privateMebibytes(child);
    }
    return memory;
}

}

void filmSession(std::filesystem::path const& file, double minutes) {
    auto const stages = stagesOf(minutes * 60);
    ScreenScene session{.happens = "session", .fps = 60, .seconds = minutes * 60};
    session.at = [&](double t) {
        for (auto const& stage : stages) {
            if (t < stage.length()) return stage.scene.at(std::min(t * stage.speed, stage.scene.seconds));
            t -= stage.length();
        }
        return stages.back().scene.at(0);
    };
    writeMovie(session, file);
}

void measureSession(std::filesystem::path const& folder, double minutes) {
    auto const movie = folder / "session.mp4";
    auto const filmed =
        runMeasured({std::filesystem::read_symlink("/proc/self/exe"), "film", movie, std::to_string(minutes)});
    std::printf("scan.session.filming %.1f s\n", filmed.seconds);
    Mebibytes most;
    auto const began = std::chrono::steady_clock::now();
    double looked = -1;
    auto const told = [&](ScanProgress const& progress) {
        if (progress.seconds < looked + 2) return;
        looked = progress.seconds;
        auto const now = memoryNow();
        if (now.own + now.readers > most.own + most.readers) most = now;
    };
    auto const outcome = scanMovie({.movie = movie, .settings = sceneSettings(), .key = {{1, 2}}}, told, {});
    auto const took = std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
    std::printf(
        "scan.session.time %.3f of its length\nscan.session.seconds %.1f s\nscan.session.findings %zu findings\n",
        took / (minutes * 60), took, outcome.findings.size());
    std::printf("scan.session.memory %.0f MiB\nscan.session.memory.readers %.0f MiB of that\n", most.own + most.readers,
                most.readers);
}

}
