#include "Stage.h"

#include <cmath>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroMedia/Frames/PNG.h>
#include <TavaroMedia/Movie/MovieWriter.h>

#include "Pictures.h"

namespace tavaro::gallery {

namespace {

constexpr int seconds = 12;

/// One picture, held.
void writeMovie(std::filesystem::path const& file, Image const& image) {
    MovieWriter writer(file, {.width = image.width(), .height = image.height(), .fps = 1, .bitrate = 40'000'000});
    for (int n = 0; n < seconds; ++n) {
        auto picture = writer.picture();
        fillPicture(picture, image.view());
        writer.append(std::move(picture), n);
    }
    writer.finish(seconds);
}

/// From the chart to the button, where it arrives after two seconds.
UnitPoint2 pointerAt(double t) {
    UnitPoint2 const from{0.42, 0.62};
    UnitPoint2 const to{0.925, 0.063};
    double const u = std::clamp((t - 0.4) / 1.6, 0.0, 1.0);
    double const eased = u * u * (3 - 2 * u);
    return {from.x + (to.x - from.x) * eased, from.y + (to.y - from.y) * eased - 0.06 * std::sin(u * M_PI)};
}

/// Warm lights and cool shadows.
std::string lookupTable() {
    constexpr int size = 5;
    std::string text = "TITLE \"Gallery\"\nLUT_3D_SIZE 5\n";
    for (int i = 0; i < size * size * size; ++i) {
        double const r = i % size / 4.0, g = i / size % size / 4.0, b = i / (size * size) / 4.0;
        double const light = (r + g + b) / 3;
        text += std::to_string(r * 0.8 + light * 0.2) + " " + std::to_string(g * 0.85 + 0.03) + " " +
                std::to_string(b * 0.7 + (1 - light) * 0.16) + "\n";
    }
    return text;
}

}

Stage::Stage(std::filesystem::path folder) : folder_(std::move(folder)), package_(folder_ / "Gallery.recproj") {
    package_.createDirectories();
    auto const application = drawApplication();
    auto const person = drawPerson();
    writeMovie(package_.assetURL("screen.mp4"), application);
    writeMovie(package_.assetURL("camera.mp4"), person);
    writeMovie(package_.assetURL("camera.matte.mp4"), drawPersonMatte());
    writePNG(package_.assetURL("wall.png"), person.view());
    writeFileAtomically(package_.assetURL("warm.cube"), lookupTable());

    project_.id = UUID();
    project_.name = "Gallery";
    project_.sourceSize = {application.width(), application.height()};
    project_.timeline.clips = {{.asset = "screen.mp4", .duration = seconds}};
    project_.assetDurations = {{"screen.mp4", seconds}, {"camera.mp4", seconds}};
    project_.cameraAsset = "camera.mp4";
    project_.camera.isEnabled = false;
    project_.background.content = BackgroundStyle::LinearGradient{};
    project_.screen = {
        .padding = 0.07, .cornerRadius = 18, .shadowRadius = 60, .shadowOpacity = 0.45, .shadowOffsetY = 18};
    auto& metadata = project_.metadata.edit();
    metadata.captureSize = project_.sourceSize;
    for (int i = 0; i <= 60 * seconds; ++i) metadata.cursorSamples.push_back({i / 60.0, pointerAt(i / 60.0)});
    metadata.clicks = {{.t = 4, .position = pointerAt(4)}};
}

Stage::~Stage() { std::filesystem::remove_all(folder_); }

}
