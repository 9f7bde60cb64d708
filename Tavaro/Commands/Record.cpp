#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/MadeTakeText.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/PauseSignal.h>
#include <Tavaro/Commands/PrivacyScanRun.h>
#include <Tavaro/Commands/ProgressLine.h>
#include <Tavaro/Commands/TakeKeys.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Commands/ToggleRecording.h>
#include <Tavaro/Control/TakeServer.h>
#include <Tavaro/Model/Project/PackagePath.h>
#include <Tavaro/Model/Recording/RecordingController.h>
#include <Tavaro/Model/Recording/RecordingPreferences.h>
#include <Tavaro/Model/Recording/TakeNames.h>

#include <TavaroCapture/X11/GlobalKey.h>
#include <TavaroCore/Values/Timecode.h>
#include <TavaroPlatform/Processes/DesktopSession.h>
#include <TavaroPlatform/Sockets/SocketError.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>
#include <ctime>
#include <exception>
#include <optional>
#include <utility>

namespace tavaro::commands {

namespace {

struct Options {
    std::string display;
    std::string window;
    std::string application;
    std::string area;
    double seconds = 0;
    int countdown = 0;
    std::string pauseKey;
    int fps = 60;
    CLI::Option const* microphone = nullptr; // given, with an id or without
    CLI::Option const* systemAudio = nullptr;
    std::string systemAudioOf;
    std::string microphoneID;
    CLI::Option const* camera = nullptr;
    std::string cameraID;
    bool logsNoKeys = false;
    bool logsNoTyping = false;
    bool isRaw = false;
    bool hidesSecrets = false;
    bool asJSON = false;
    bool isToggled = false; // in the application that runs
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

std::string stateOf(RecorderState const& recorder) {
    constexpr double ample = 3600; // seconds
    auto const& progress = recorder.take;
    auto state = (recorder.phase == RecorderPhase::paused ? "paused at " : "") + Timecode::format(progress.seconds);
    for (auto const& sound : progress.sounds)
        state += fmt::format(", {} {}", spokenName(sound.role), sound.isAway ? "away" : meter(sound.level));
    if (progress.isScreenAway) state += ", screen away";
    if (progress.isCameraAway) state += ", camera away";
    if (auto const dropped = progress.droppedFrames; dropped > 0)
        state += fmt::format(", {} {} dropped", dropped, dropped == 1 ? "frame" : "frames");
    if (progress.roomSeconds && *progress.roomSeconds < ample)
        state += fmt::format(", room for {:.0f} min", std::floor(*progress.roomSeconds / 60));
    return state + ".";
}

KeyLogging keyLogging(Options const& options) {
    if (options.logsNoKeys) return KeyLogging::none;
    return options.logsNoTyping ? KeyLogging::shortcuts : KeyLogging::all;
}

RecorderOptions recorderOptions(Options const& options) {
    RecorderOptions result{.source = sourceOf(options), .fps = options.fps, .keys = keyLogging(options)};
    if (options.microphone->count() > 0) result.microphone = MicrophoneSource{options.microphoneID};
    if (options.systemAudio->count() > 0) result.systemSound = SystemSoundSource{options.systemAudioOf};
    if (options.camera->count() > 0) {
        Preferences preferences;
        result.camera = cameraSource(options.cameraID, preferences);
    }
    return result;
}

RecordingRequest requestOf(Options const& options) {
    bool const isNamed = !options.output.empty();
    return {.recorder = recorderOptions(options),
            .countdown = options.countdown,
            .seconds = options.seconds,
            .project = {.package = packagePath(isNamed ? options.output : recordingName(std::time(nullptr))),
                        .mode = modeNamed(options.mode),
                        .firstEdit = options.isRaw ? FirstEdit::raw : FirstEdit::polished,
                        .nameTaken = isNamed ? NameTaken::fails : NameTaken::isNumbered,
                        .isScanDue = isScanWanted(options.hidesSecrets)}};
}

void expectShortcuts() {
    if (desktopKind() != DesktopKind::wayland) return;
    throw CaptureError(CaptureError::Kind::noDisplay,
                       "A Wayland desktop gives programs no shortcuts of their own. Give it one in its settings that "
                       "runs `pkill -USR1 -f \"tavaro record\"`, which pauses the take and lets it go on.");
}

/// A recording that somebody watches on a terminal, and orders about from there. What was shown of it there and what
/// was taken of the terminal ends with the take. While that is saved a first Ctrl-C is answered, another one ends the
/// program.
class WatchedRecording {
    /// A reader of what is told that ends, as `head` does, does not end the take.
    class ReadersMayGo {
    public:
        ReadersMayGo() : before_(std::signal(SIGPIPE, SIG_IGN)) {}
        ~ReadersMayGo() { std::signal(SIGPIPE, before_); }
        ReadersMayGo(ReadersMayGo const&) = delete;
        ReadersMayGo& operator=(ReadersMayGo const&) = delete;

    private:
        void (*before_)(int);
    };

public:
    explicit WatchedRecording(MainQueue& queue)
        : recorder_(queue)
        , observation_(recorder_.observe([this](RecorderState const& state) { show(state); })) {
        try {
            server_.emplace(queue, recorder_);
        } catch (SocketError const& error) {
            spdlog::debug("The studio does not see this take: {}", error.what());
        }
    }

    RecordingOutcome run(MainQueue& queue, RecordingRequest request, std::string const& pauseKey) {
        if (!pauseKey.empty()) {
            expectShortcuts();
            pauseKey_.emplace(pauseKey, request.recorder.display,
                              [this, &queue] { queue.async([this] { togglePause(); }); });
            request.recorder.ownShortcuts = {pauseKey_->chord()};
        }
        std::optional<RecordingOutcome> outcome;
        recorder_.start(std::move(request), {.remark = [this](std::string const& remark) { tell(remark); },
                                             .over =
                                                 [&](RecordingOutcome const& over) {
                                                     leaveTerminal();
                                                     outcome = over;
                                                 }});
        queue.runUntil([&] {
            followOrders();
            return outcome.has_value();
        });
        return *outcome;
    }

private:
    void followOrders() {
        auto const phase = recorder_.state().phase;
        bool const isEnd = interruption_.isRequested();
        if (isEnd && !std::exchange(wasEnded_, true) && phase == RecorderPhase::finishing)
            tell("The take is being saved. Another Ctrl-C ends that; `tavaro recover last` brings the take back then.");
        if (isEnd && recorder_.isTaking()) return recorder_.stop();
        if (isEnd && phase == RecorderPhase::countdown) return recorder_.cancel();
        if (pause_.take()) togglePause();
        while (auto const key = keys_ ? keys_->next() : std::nullopt) follow(*key);
    }

    void follow(char key) {
        if (std::exchange(asksToDiscard_, false)) {
            if (key == 'y' || key == 'Y') recorder_.cancel();
            return;
        }
        if (key == ' ') togglePause();
        asksToDiscard_ = key == 'x';
        if (key != 'q') return;
        if (recorder_.isTaking())
            recorder_.stop();
        else if (recorder_.state().phase == RecorderPhase::countdown)
            recorder_.cancel();
    }

    void togglePause() {
        if (recorder_.state().phase == RecorderPhase::paused)
            recorder_.resume();
        else if (recorder_.isTaking())
            recorder_.pause();
    }

    void show(RecorderState const& state) {
        if (state.phase == RecorderPhase::finishing || state.phase == RecorderPhase::idle) return leaveTerminal();
        if (!line_) return;
        if (asksToDiscard_)
            line_->text("goes on. Throw this take away? y does, any other key does not.");
        else if (state.isAsking)
            line_->text("waits: the desktop asks what to share. Ctrl-C gives up.");
        else if (state.countdown > 0)
            line_->text(fmt::format("begins in {}.", state.countdown));
        else if (state.phase != RecorderPhase::countdown)
            line_->text(stateOf(state) + (keys_ && keys_->areThere() ? orders(state) : " Ctrl-C ends the take."));
    }

    static std::string orders(RecorderState const& state) {
        return fmt::format(" Space {}, q ends, x throws away.",
                           state.phase == RecorderPhase::paused ? "goes on" : "pauses");
    }

    void leaveTerminal() {
        keys_.reset();
        line_.reset();
    }

    void tell(std::string const& remark) {
        bool const isBetween = line_.has_value();
        line_.reset();
        terminal::tell("{}\n", remark);
        if (isBetween) line_.emplace("Recording");
    }

    ReadersMayGo readersMayGo_;
    Interruption interruption_{
        {.farewell = "\nEnded before the take was saved. `tavaro recover last` brings it back.\n"}};
    bool wasEnded_ = false;
    PauseSignal pause_;
    std::optional<x11::GlobalKey> pauseKey_;
    std::optional<TakeKeys> keys_{std::in_place};
    std::optional<ProgressLine> line_{std::in_place, "Recording"};
    bool asksToDiscard_ = false;
    RecordingController recorder_;
    RecordingController::Observation observation_;
    std::optional<TakeServer> server_; // none where its socket cannot be made
};

void record(Options const& options) {
    auto const output = options.asJSON ? TakeOutput::json : TakeOutput::lines;
    if (options.isToggled) return toggleRecording(output);
    MainQueue queue;
    auto const outcome = WatchedRecording(queue).run(queue, requestOf(options), options.pauseKey);
    if (outcome.kind == RecordingOutcome::Kind::discarded && outcome.hasBegun)
        return terminal::tell("{}\n", outcome.sentence());
    if (outcome.failure) std::rethrow_exception(outcome.failure);
    bool const isLookedAt = hideInNewTake(outcome.made->made.path, output);
    print(*outcome.made, output);
    if (!isLookedAt && options.hidesSecrets) throw Error("The take may show private text.");
}

}

void addRecord(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command =
        app.add_subcommand("record", "Records a display, a window, an application or an area of the screen");
    auto* sources = command->add_option_group("source", "What to record; the main display where none is given");
    sources->add_option("--display", options->display, "a display, by its id in `tavaro sources`")->check(notEmpty);
    sources->add_option("--window", options->window, "a window, by its id in `tavaro sources`")
        ->check(notEmpty)
        ->check(readableBy(parseWindowSource));
    sources->add_option("--app", options->application, "all windows of an application, by name")->check(notEmpty);
    sources->add_option("--area", options->area, "X,Y,W,H in pixels of the desktop")
        ->check(notEmpty)
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
    command->add_option("--seconds", options->seconds, "end the take after that long; else q or Ctrl-C does")
        ->check(secondsFrom(0.1, 86'400));
    command->add_option("--countdown", options->countdown, "whole seconds to wait before the take begins")
        ->check(CLI::Range(0, 60));
    command
        ->add_option("--pause-key", options->pauseKey,
                     "a shortcut that pauses the take from anywhere and lets it go on, like ctrl+alt+p")
        ->check(notEmpty);
    command->add_option("--fps", options->fps, "frames a second")->check(CLI::Range(1, 120))->capture_default_str();
    auto* const noKeys = command->add_flag("--no-keys", options->logsNoKeys, "log no keystrokes");
    command
        ->add_flag("--no-typing", options->logsNoTyping,
                   "log no keystrokes but shortcuts: what is pressed with Ctrl, Alt or Super")
        ->excludes(noKeys);
    command->add_option("--mode", options->mode, "what kind of demo it is")->check(modeNames())->capture_default_str();
    command->add_flag("--no-polish", options->isRaw, "leave the take as it was recorded");
    command->add_flag("--hide-secrets", options->hidesSecrets,
                      "look for private text in the take when it is saved, and hide it");
    command->add_option("-o,--output", options->output, "the project to make, NAME.recproj")->check(projectName);
    auto* const toggle =
        command->add_flag("--toggle", options->isToggled,
                          "begin the recording that is chosen in the running application, or end its take");
    for (auto* const option : command->get_options())
        if (option != toggle && option != command->get_help_ptr()) toggle->excludes(option);
    for (auto* const option : sources->get_options()) toggle->excludes(option);
    command->add_flag("--json", options->asJSON, "print what was made as JSON");
    command->callback([options] { record(*options); });
}

}
