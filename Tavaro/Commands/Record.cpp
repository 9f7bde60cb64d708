#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/ProgressLine.h>
#include <Tavaro/Commands/Take.h>
#include <Tavaro/Model/Project/PackagePath.h>

#include <TavaroCapture/Recorder/ScreenRecorder.h>
#include <TavaroCapture/Recovery/RecoveryStore.h>
#include <TavaroCore/Values/Timecode.h>

#include <CLI/CLI.hpp>
#include <fmt/chrono.h>
#include <fmt/format.h>

#include <ctime>

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

/// "Recording 2026-03-01 at 09.30.15", in the current folder.
std::string nameForNow() {
    return fmt::format("Recording {:%Y-%m-%d at %H.%M.%S}", fmt::localtime(std::time(nullptr)));
}

std::string stateOf(RecorderProgress const& progress) {
    auto state = Timecode::format(progress.seconds);
    if (progress.droppedFrames > 0) state += fmt::format(", {} frames dropped", progress.droppedFrames);
    return state + ". Ctrl-C ends the take.";
}

/// Until the time is over, somebody presses Ctrl-C, or the take ends by itself.
void runTake(ScreenRecorder& recorder, double seconds) {
    using namespace std::chrono_literals;
    Interruption const interruption;
    recorder.start();
    ProgressLine line("Recording");
    while (!interruption.isRequested()) {
        auto const progress = recorder.progress();
        if (seconds > 0 && progress.seconds >= seconds) return;
        line.text(stateOf(progress));
        if (recorder.waitForEnd(20ms)) return;
    }
}

void record(Options const& options) {
    auto const package = packagePath(options.output.empty() ? nameForNow() : options.output);
    expectPlaceFor(package);
    auto const mode = modeNamed(options.mode);
    RecoveryStore::pruneOldRecordings();
    auto const source = sourceOf(options);
    ScreenRecorder recorder({.source = source, .fps = options.fps, .logsKeystrokes = !options.logsNoKeys});
    runTake(recorder, options.seconds);
    auto const take = recorder.stop();
    if (take.endedEarly) fmt::print(stderr, "{}\n", *take.endedEarly);
    saveTake({take.movie, take.metadata, take.duration, take.streams, take.warnings}, package, mode,
             options.isRaw ? FirstEdit::raw : FirstEdit::polished,
             options.asJSON ? TakeOutput::json : TakeOutput::lines);
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
