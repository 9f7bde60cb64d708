#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/MadeTakeText.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/ProgressLine.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Model/Project/PackagePath.h>
#include <Tavaro/Model/Recording/RecordingController.h>
#include <Tavaro/Model/Recording/RecordingPreferences.h>
#include <Tavaro/Model/Recording/TakeNames.h>

#include <TavaroCore/Values/Timecode.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
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
    CLI::Option const* microphone = nullptr; // given, with an id or without
    CLI::Option const* systemAudio = nullptr;
    std::string systemAudioOf;
    std::string microphoneID;
    CLI::Option const* camera = nullptr;
    std::string cameraID;
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

/// One character, of 60 dB.
std::string_view meter(float level) {
    static constexpr std::array<std::string_view, 9> bars{"·", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
    double const share = 1 + std::log10(std::max(level, 1e-6f)) / 3;
    return bars[static_cast<std::size_t>(std::ceil(std::clamp(share, 0.0, 1.0) * (bars.size() - 1)))];
}

std::string stateOf(RecorderProgress const& progress) {
    auto state = Timecode::format(progress.seconds);
    for (auto const& sound : progress.sounds)
        state += fmt::format(", {} {}", spokenName(sound.role), sound.isAway ? "away" : meter(sound.level));
    if (progress.isCameraAway) state += ", camera away";
    if (progress.droppedFrames > 0) state += fmt::format(", {} frames dropped", progress.droppedFrames);
    return state + ". Ctrl-C ends the take.";
}

RecorderOptions recorderOptions(Options const& options) {
    RecorderOptions result{.source = sourceOf(options), .fps = options.fps, .logsKeystrokes = !options.logsNoKeys};
    if (options.microphone->count() > 0) result.microphone = MicrophoneSource{options.microphoneID};
    if (options.systemAudio->count() > 0) result.systemSound = SystemSoundSource{options.systemAudioOf};
    if (options.camera->count() > 0) {
        Preferences preferences;
        result.camera = cameraSource(options.cameraID, preferences);
    }
    return result;
}

RecordingRequest requestOf(Options const& options) {
    return {
        .recorder = recorderOptions(options),
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
        if (state.isAsking && line) line->text("the desktop asks what to share. Ctrl-C gives up.");
        if (state.phase != RecorderPhase::finishing) return;
        line.reset();
        interruption.reset();
    });
    auto const tell = [&line](std::string const& remark) {
        bool const isBetween = line.has_value();
        line.reset();
        terminal::tell("{}\n", remark);
        if (isBetween) line.emplace("Recording");
    };
    recorder.start(std::move(request), {.remark = tell, .over = [&](RecordingOutcome const& over) {
                                            line.reset();
                                            outcome = over;
                                        }});
    queue.runUntil([&] {
        bool const isRequested = interruption && interruption->isRequested();
        if (isRequested && recorder.isTaking()) recorder.stop();
        if (isRequested && recorder.state().isAsking && recorder.state().phase == RecorderPhase::countdown)
            recorder.cancel();
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
    options->microphone = command
                              ->add_option("--microphone", options->microphoneID,
                                           "record the default microphone, or one by its id in `tavaro sources`")
                              ->expected(0, 1)
                              ->type_name("[ID]");
    options->camera = command
                          ->add_option("--camera", options->cameraID,
                                       "film with the default camera, or one by its id in `tavaro sources`")
                          ->expected(0, 1)
                          ->type_name("[ID]");
    options->systemAudio =
        command
            ->add_option("--system-audio", options->systemAudioOf,
                         "record what the machine plays, or one application only, by its name in `tavaro sources`")
            ->expected(0, 1)
            ->type_name("[APP]");
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
