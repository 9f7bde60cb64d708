#include <Tavaro/Commands/Command.h>

#include <Tavaro/Model/NewProject.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Frames/PNG.h>
#include <TavaroRender/Export/Exporter.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>

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
    return {options.maxWidth, std::max<std::int64_t>(std::llround(static_cast<double>(canvas.height) * scale), 2)};
}

void frame(Options const& options) {
    ProjectPackage const package(packagePath(options.package));
    auto const project = package.load();
    auto settings = project.exportSettings;
    settings.size = sizeOf(options, project.canvas);
    auto const image = Exporter(project, package, settings).renderStill(options.at);
    writePNG(options.output, image.view());
    fmt::print("{}\n", options.output);
}

}

void addFrame(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("frame", "Writes one frame of the edit as a PNG, exactly as the film shows it");
    command->add_option("PROJECT", options->package, "the project, NAME.recproj")->required();
    command->add_option("--at", options->at, "seconds from the start of the edit")
        ->required()
        ->check(CLI::NonNegativeNumber);
    command->add_option("--max-width", options->maxWidth, "scale the frame down to that many pixels")
        ->check(CLI::Range(16, 16384));
    command->add_option("-o,--output", options->output, "the PNG to write")->required();
    command->callback([options] { frame(*options); });
}

}
