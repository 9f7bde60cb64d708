#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/MadeTakeText.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/ProgressLine.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Model/Project/PackagePath.h>
#include <Tavaro/Model/Recording/RecordingController.h>
#include <Tavaro/Model/Recording/TakeNames.h>

#include <TavaroCore/Values/Timecode.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <ctime>
#include <exception>
#include <optional>

namespace tavaro::commands {

namespace {

struct Options {
    std::string display;
    std::string window;
    std::string application;
    std::string area;
    double seconds = 0;
    int fps = 60;
    bool logsNoKeys = false;
    bool isRaw = false;
    bool asJSON = false;
    std::string mode = "website";
    std::string output;
};

CaptureSource sourceOf(Options const& options) {
    if (!options.window.empty()) return parseWindowSource(options.window);
    if (!options.application.empty()) return ApplicationSource{options.application};
    if (!options.area.empty()) return parseAreaSource(options.area);
    return DisplaySource{options.display};
}

std::string stateOf(RecorderProgress const& progress) {
    auto state = Timecode::format(progress.seconds);
    if (progress.droppedFrames > 0) state += fmt::format(", {} frames dropped", progress.droppedFrames);
    return state + ". Ctrl-C ends the take.";
}

RecordingRequest requestOf(Options const& options) {
    return {
        .recorder = {.source = sourceOf(options), .fps = options.fps, .logsKeystrokes = !options.logsNoKeys},
        .seconds = options.seconds,
        .project = {.package = packagePath(options.output.empty() ? recordingName(std::time(nullptr)) : options.output),
                    .mode = modeNamed(options.mode),
                    .firstEdit = options.isRaw ? FirstEdit::raw : FirstEdit::polished}};
}

/// While the take lasts, Ctrl-C ends it; later, the program.
RecordingOutcome recorded(RecordingRequest request) {
    MainQueue queue;
    RecordingController recorder(queue);
    std::optional<Interruption> interruption(std::in_place);
    std::optional<ProgressLine> line(std::in_place, "Recording");
    std::optional<RecordingOutcome> outcome;
    auto const observation = recorder.observe([&](RecorderState const& state) {
        if (state.phase == RecorderPhase::recording && line) line->text(stateOf(state.take));
        if (state.phase != RecorderPhase::finishing) return;
        line.reset();
        interruption.reset();
    });
    recorder.start(std::move(request), {.remark = [](std::string const& remark) { terminal::tell("{}\n", remark); },
                                        .over =
                                            [&](RecordingOutcome const& over) {
                                                line.reset();
                                                outcome = over;
                                            }});
    queue.runUntil([&] {
        if (interruption && interruption->isRequested() && recorder.isTaking()) recorder.stop();
        return outcome.has_value();
    });
    return *outcome;
}

void record(Options const& options) {
    auto const outcome = recorded(requestOf(options));
    if (outcome.failure) std::rethrow_exception(outcome.failure);
    print(*outcome.made, options.asJSON ? TakeOutput::json : TakeOutput::lines);
}

}

void addRecord(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command =
        app.add_subcommand("record", "Records a display, a window, an application or an area of the screen");
    auto* sources = command->add_option_group("source", "What to record; the main display where none is given");
    sources->add_option("--display", options->display, "a display, by its id in `tavaro sources`");
    sources->add_option("--window", options->window, "a window, by its id in `tavaro sources`")
        ->check(readableBy(parseWindowSource));
    sources->add_option("--app", options->application, "the frontmost window of an application, by name");
    sources->add_option("--area", options->area, "X,Y,W,H in pixels of the desktop")
        ->check(readableBy(parseAreaSource));
    sources->require_option(0, 1);
    command->add_option("--seconds", options->seconds, "end the take after that long; else Ctrl-C ends it")
        ->check(secondsFrom(0.1, 86'400));
    command->add_option("--fps", options->fps, "frames a second")->check(CLI::Range(1, 120))->capture_default_str();
    command->add_flag("--no-keys", options->logsNoKeys, "log no keystrokes");
    command->add_option("--mode", options->mode, "what kind of demo it is")->check(modeNames())->capture_default_str();
    command->add_flag("--no-polish", options->isRaw, "leave the take as it was recorded");
    command->add_option("-o,--output", options->output, "the project to make, NAME.recproj")->check(notEmpty);
    command->add_flag("--json", options->asJSON, "print what was made as JSON");
    command->callback([options] { record(*options); });
}

}
