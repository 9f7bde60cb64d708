#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Model/Exporting/DrawnPicture.h>
#include <Tavaro/Model/Exporting/FilmFrame.h>
#include <Tavaro/Model/Project/StoredProject.h>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Values/Timecode.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Frames/PNG.h>
#include <TavaroRender/Sheet/ContactSheet.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace tavaro::commands {

namespace {

struct Options {
    std::string package;
    std::optional<double> at;
    int sheet = 0; // moments; 0: one frame
    std::int64_t maxWidth = 0;
    std::string output;
    PendingFile::IfTaken ifTaken = PendingFile::IfTaken::refuse;
    bool asJSON = false;
};

constexpr int mostMoments = 400;
constexpr std::int64_t sheetWidth = 1920;

Size2 sizeOf(Options const& options, Size2 canvas) {
    if (options.maxWidth <= 0 || canvas.width <= options.maxWidth) return canvas;
    double const scale = static_cast<double>(options.maxWidth) / static_cast<double>(canvas.width);
    return {options.maxWidth, std::max<std::int64_t>(std::llround(static_cast<double>(canvas.height) * scale), 16)};
}

std::string pictureProblem(std::string const& output) {
    return endingOf(output) == ".png" ? "" : fmt::format("“{}” is not the name of a PNG, as in frame.png", output);
}

std::string timeText(double seconds) { return Timecode::format(seconds, Timecode::Fraction::hundredths); }

void printResult(Options const& options, DrawnPicture const& picture) {
    if (options.asJSON)
        terminal::sayJSON(encodeJSON(picture));
    else
        terminal::sayPath(picture.path);
}

void frame(Options const& options) {
    expectWritable(options.output, options.ifTaken);
    auto const [package, project] = openProject(options.package);
    auto painter = framePainter(project, package, sizeOf(options, project.canvas));
    auto const image = filmFrame(painter, *options.at);
    writePNG(options.output, image.view(), PNGPacking::quick, options.ifTaken);
    printResult(options, {options.output, image.width(), image.height(), {*options.at}});
}

/// Under the name that was asked for, or else the first free one of "sheet.png", "sheet 2.png", …
std::string writeSheet(Options const& options, ImageView image) {
    if (!options.output.empty()) writePNG(options.output, image, PNGPacking::small, options.ifTaken);
    if (!options.output.empty()) return options.output;
    while (true) {
        auto const name = unusedFile("sheet.png");
        try {
            writePNG(name, image, PNGPacking::small, PendingFile::IfTaken::refuse);
            return name.string();
        } catch (MediaError const&) {
            if (unusedFile(name) == name) throw; // else it was taken meanwhile
        }
    }
}

void sheet(Options const& options) {
    if (!options.output.empty()) expectWritable(options.output, options.ifTaken);
    auto const [package, project] = openProject(options.package);
    auto const layout =
        sheetLayout(options.sheet, project.canvas, options.maxWidth > 0 ? options.maxWidth : sheetWidth);
    auto painter = framePainter(project, package, layout.picture);
    auto const times = sheetTimes(options.sheet, painter.duration(), project.exportSettings.fps);
    ContactSheet sheet(
        layout, project.name,
        fmt::format("{}  ·  {} × {}", timeText(painter.duration()), project.canvas.width, project.canvas.height));
    for (auto const time : times) sheet.add(filmFrame(painter, time).view(), timeText(time));
    auto const image = sheet.finish();
    auto const output = writeSheet(options, image->view());
    printResult(options, {output, layout.sheet.width, layout.sheet.height, times});
}

}

void addFrame(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("frame", "Writes one frame of the edit as a PNG, exactly as the film shows it");
    command->add_option("PROJECT", options->package, "the project, NAME.recproj")->required()->check(notEmpty);
    auto* output =
        command->add_option("-o,--output", options->output, "the PNG to write; of a sheet, sheet.png unless said")
            ->check(pictureProblem);
    auto* at = command->add_option("--at", options->at, "seconds from the start of the video")
                   ->check(secondsFrom(0, std::numeric_limits<double>::infinity()))
                   ->needs(output);
    auto* sheetOf = command->add_option("--sheet", options->sheet, "that many moments of the whole on one picture")
                        ->check(CLI::Range(1, mostMoments))
                        ->excludes(at);
    command
        ->add_option("--max-width", options->maxWidth,
                     "scale the picture down to that many pixels; a sheet is about as wide")
        ->check(CLI::Range(64, 16384));
    addOverwriting(*command, options->ifTaken);
    command->add_flag("--json", options->asJSON, "print the result as JSON");
    command->callback([options, at, sheetOf] {
        if (*at) return frame(*options);
        if (*sheetOf) return sheet(*options);
        throw CLI::RequiredError("--at or --sheet");
    });
}

}
