#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/ProgressLine.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Model/Making/ImportedMovie.h>
#include <Tavaro/Model/Project/PackagePath.h>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Values/Timecode.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <chrono>
#include <optional>

namespace tavaro::commands {

namespace {

using namespace std::chrono_literals;

struct Options {
    std::string movie;
    std::string events;
    std::string mode = "website";
    std::string output;
    bool asJSON = false;
};

void show(ProgressLine& line, ImportProgress const& progress) {
    if (progress.stage == ImportStage::measuring) {
        line.stage("Measuring sound");
        line.text(fmt::format("{:.0f} %", 100 * progress.measured));
    } else if (progress.bytesDone < progress.bytesTotal) {
        line.stage("Copying");
        line.text(fmt::format("{} of {}", fileSizeText(static_cast<std::int64_t>(progress.bytesDone)),
                              fileSizeText(static_cast<std::int64_t>(progress.bytesTotal))));
    }
}

void import(Options const& options) {
    MainQueue queue;
    auto job = importJob(queue, {.movie = options.movie,
                                 .events = options.events,
                                 .package = packagePath(options.output),
                                 .mode = modeNamed(options.mode)});
    job.onRemark([](std::string const& remark) { terminal::tell("{}\n", remark); });
    std::optional<Interruption> interruption(std::in_place);
    std::optional<ProgressLine> line(std::in_place, "",
                                     options.asJSON ? ProgressLine::Output::silent : ProgressLine::Output::automatic);
    auto const begun = std::chrono::steady_clock::now();
    job.onProgress([&](ImportProgress const& progress) {
        if (std::chrono::steady_clock::now() - begun > 1s) show(*line, progress);
    });
    job.start();
    queue.runUntil([&] {
        if (interruption->isRequested()) job.cancel();
        return job.isFinished();
    });
    line.reset();
    interruption.reset();
    auto const& made = job.result();
    if (options.asJSON) {
        terminal::sayJSON(encodeJSON(made));
        return;
    }
    terminal::say("{} of {}×{}, {}, {}\n", Timecode::format(made.duration, Timecode::Fraction::hundredths),
                  made.sourceSize.width, made.sourceSize.height,
                  counted(static_cast<std::size_t>(made.clicks), "click"),
                  counted(static_cast<std::size_t>(made.keystrokes), "key"));
    terminal::sayPath(made.path);
}

}

void addImport(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("import", "Makes a project of any movie");
    command->add_option("MOVIE", options->movie, "the movie to bring in")->required();
    command->add_option("--events", options->events, "a JSON log of what happened: clicks, keystrokes, cursorSamples");
    command->add_option("--mode", options->mode, "what kind of demo it is")->check(modeNames())->capture_default_str();
    command->add_option("-o,--output", options->output, "the project to make, NAME.recproj")
        ->required()
        ->check(projectName);
    command->add_flag("--json", options->asJSON, "print what was made as JSON");
    command->callback([options] { import(*options); });
}

}
