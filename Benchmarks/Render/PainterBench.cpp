// What a preview waits for on an hour's take: its first frame, the next one, and a frame after an edit of one field.

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroRender/Painter/FramePainter.h>

#include "../Core/HourTake.h"
#include "HourMovie.h"
#include "Measured.h"

namespace tavaro {

namespace {

namespace fs = std::filesystem;

constexpr Size2 size{1920, 1080};
constexpr double moment = 1800; // seconds; in the middle of the hour
constexpr int rounds = 15;

/// For screen and camera alike.
void writeHour(ProjectPackage const& package) {
    package.createDirectories();
    writeHourMovie(package.assetURL("screen.mp4"));
    fs::create_hard_link(package.assetURL("screen.mp4"), package.assetURL("camera.mp4"));
}

DemoProject project() {
    auto project = hourTake();
    project.sourceSize = size;
    project.assetDurations = {{"screen.mp4", 3600}, {"camera.mp4", 3600}};
    project.cameraAsset = "camera.mp4";
    project.camera.avoidsContent = true;
    project.cursor.idleHideAfter = 2;
    project.overlays.push_back(
        {.kind = {OverlayKind::Callout{.text = "Look here"}}, .start = moment - 5, .duration = 60});
    return project;
}

double milliseconds(std::function<void()> const& work) {
    auto const start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

void print(char const* name, double value) {
    std::printf("%s %.3f ms\n", name, value);
    std::fflush(stdout);
}

void measure(ProjectPackage const& package) {
    auto document = project();
    std::vector<double> cold, next, shows, revisions, styles;
    for (int i = 0; i < 5; ++i) {
        cold.push_back(milliseconds([&] {
            FramePainter painter(package, size);
            painter.show(document);
            painter.frame(moment);
        }));
    }
    FramePainter painter(package, size);
    painter.show(document);
    painter.frame(moment);
    double at = moment;
    for (int i = 0; i < rounds; ++i) next.push_back(milliseconds([&] { painter.frame(at += 1.0 / 60); }));
    auto const revised = [&](auto const& edit) {
        edit();
        double const show = milliseconds([&] { painter.show(document); });
        shows.push_back(show);
        return show + milliseconds([&] { painter.frame(at); });
    };
    for (int i = 0; i < rounds; ++i) {
        revisions.push_back(revised([&] { document.overlays.back().fontSize += 1; }));
        styles.push_back(revised([&] { document.screen.cornerRadius += 1; }));
    }
    print("painter.cold", median(cold));
    print("painter.next_frame", median(next));
    print("painter.show", median(shows));
    print("painter.revision", median(revisions));
    print("painter.revision_style", median(styles));
}

}

}

int main() {
    try {
        char pattern[] = "/tmp/tavaro-bench-painter-XXXXXX";
        if (!mkdtemp(pattern)) throw std::runtime_error("No folder for the measurement could be made in /tmp.");
        struct Cleaner {
            std::filesystem::path folder;
            ~Cleaner() {
                std::error_code ignored;
                std::filesystem::remove_all(folder, ignored);
            }
        } const cleaner{pattern};
        tavaro::ProjectPackage const package(cleaner.folder / "hour.recproj");
        tavaro::writeHour(package);
        tavaro::measure(package);
        return 0;
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
