#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Model/OpenProject.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Values/Timecode.h>
#include <TavaroMedia/Frames/PNG.h>
#include <TavaroRender/Export/Exporter.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tavaro::commands {

namespace {

struct Options {
    std::string package;
    double at = 0;
    std::int64_t maxWidth = 0;
    std::string output;
};

Size2 sizeOf(Options const& options, Size2 canvas) {
    if (options.maxWidth <= 0 || canvas.width <= options.maxWidth) return canvas;
    double const scale = static_cast<double>(options.maxWidth) / static_cast<double>(canvas.width);
    return {options.maxWidth, std::max<std::int64_t>(std::llround(static_cast<double>(canvas.height) * scale), 16)};
}

std::string pictureProblem(std::string const& output) {
    return endingOf(output) == ".png" ? "" : fmt::format("“{}” is not the name of a PNG, as in frame.png", output);
}

/// The end itself still shows the last frame.
void expectInside(double seconds, double duration) {
    constexpr double tolerance = 1e-6;
    if (duration <= 0 || seconds <= duration + tolerance) return;
    auto const text = [](double time) { return Timecode::format(time, Timecode::Fraction::hundredths); };
    throw Error(fmt::format("There is no frame at {}: the video ends at {}.", text(seconds), text(duration)));
}

void frame(Options const& options) {
    auto const [package, project] = openProject(options.package);
    auto settings = project.exportSettings;
    settings.size = sizeOf(options, project.canvas);
    Exporter exporter(project, package, settings);
    expectInside(options.at, exporter.duration());
    auto const image = exporter.renderStill(options.at);
    writePNG(options.output, image.view());
    fmt::print("{}\n", options.output);
}

}

void addFrame(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("frame", "Writes one frame of the edit as a PNG, exactly as the film shows it");
    command->add_option("PROJECT", options->package, "the project, NAME.recproj")->required()->check(notEmpty);
    command->add_option("--at", options->at, "seconds from the start of the video")
        ->required()
        ->check(secondsFrom(0, std::numeric_limits<double>::infinity()));
    command->add_option("--max-width", options->maxWidth, "scale the frame down to that many pixels")
        ->check(CLI::Range(64, 16384));
    command->add_option("-o,--output", options->output, "the PNG to write")->required()->check(pictureProblem);
    command->callback([options] { frame(*options); });
}

}
