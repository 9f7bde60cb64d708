#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/ProgressLine.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Model/Project/StoredProject.h>
#include <Tavaro/Model/Voice/TranscriptionJob.h>

#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Values/Timecode.h>
#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Transcription/SpokenLocale.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <string>
#include <vector>

#include <unistd.h>

namespace tavaro::commands {

namespace {

struct Options {
    std::string package;
    std::string track = "microphone";
    TranscriptionChoices choices;
    bool listsEngines = false;
    bool asJSON = false;
};

/// What came of it, for programs.
struct TranscriptionReport {
    std::string engine;
    std::string locale;
    std::size_t words = 0;
    std::string text;
    std::vector<TimeRange> unrecognisedSounds; // seconds of the recording

    static constexpr auto fields = std::tuple{
        field("engine", &TranscriptionReport::engine),
        field("locale", &TranscriptionReport::locale),
        field("words", &TranscriptionReport::words),
        field("text", &TranscriptionReport::text),
        field("unrecognisedSounds", &TranscriptionReport::unrecognisedSounds),
    };
    bool operator==(TranscriptionReport const&) const = default;
};
static_assert(listsEveryField<TranscriptionReport>);

void printEngines(bool asJSON) {
    Preferences preferences;
    auto const engines = transcriptionEngines(EnginePlaces::usual(preferences));
    if (asJSON) return terminal::sayJSON(encodeJSON(engines));
    for (auto const& engine : engines) {
        terminal::say("{}, {}: {}\n", engine.name, engine.id, engine.isReady ? "ready" : "not here yet");
        if (engine.program) terminal::say("  program    {}\n", *engine.program);
        if (engine.model) terminal::say("  model      {}\n", *engine.model);
        terminal::say("  languages  {}\n", engine.languages);
        terminal::say("  {}\n  {}\n", engine.accuracy, engine.advice);
    }
}

std::string spoken(std::vector<TranscriptWord> const& words) { return Transcript{.words = words}.plainText(); }

/// Words as they come are for a person at a terminal.
void show(ProgressLine& line, TranscriptionProgress const& progress, Options const& options) {
    if (!options.asJSON && !progress.words.empty() && isatty(STDERR_FILENO) == 1)
        terminal::tell("\r\x1b[K{}  {}\n", Timecode::format(progress.words.front().start), spoken(progress.words));
    auto const heard = Timecode::format(progress.seconds);
    line.text(progress.total > 0 ? fmt::format("{} of {}", heard, Timecode::format(progress.total)) : heard);
}

TranscriptionRequest requestOf(Options const& options) {
    auto const [package, project] = openProject(options.package);
    auto const role = enumNamed<AudioRole>(options.track).value();
    auto sounds = spokenSounds(project, package, role);
    if (sounds.empty() && role != AudioRole::microphone)
        throw VoiceError(VoiceError::Kind::noSound,
                         fmt::format("The project has no {} track to transcribe.", options.track));
    Preferences preferences;
    return {.sounds = std::move(sounds), .choices = options.choices, .places = EnginePlaces::usual(preferences)};
}

/// The project is not held while its sound is heard.
MadeTranscript hear(TranscriptionRequest request, Options const& options) {
    MainQueue queue;
    auto job = transcriptionJob(queue, std::move(request));
    Interruption const interruption;
    ProgressLine line("Transcribing", options.asJSON ? ProgressLine::Output::silent : ProgressLine::Output::automatic);
    job.onRemark([](std::string const& sentence) { terminal::tell("{}\n", sentence); });
    job.onProgress([&](TranscriptionProgress const& progress) { show(line, progress, options); });
    job.start();
    queue.runUntil([&] {
        if (interruption.isRequested()) job.cancel();
        return job.isFinished();
    });
    return std::move(job.result());
}

void print(MadeTranscript const& made, Options const& options) {
    auto const& transcript = made.transcript;
    if (options.asJSON) {
        return terminal::sayJSON(encodeJSON(TranscriptionReport{.engine = made.engine.id,
                                                                .locale = transcript.localeIdentifier,
                                                                .words = transcript.words.size(),
                                                                .text = transcript.plainText(),
                                                                .unrecognisedSounds = transcript.unrecognisedSounds}));
    }
    terminal::say("Transcribed {} in {} with {}.\n", counted(transcript.words.size(), "word"),
                  transcript.localeIdentifier, made.engine.name);
}

/// The tracks beside that one in which somebody may be heard, as a sentence; nothing where there is none.
std::string otherTracks(Options const& options) {
    auto const [package, project] = openProject(options.package);
    std::vector<std::string> tracks;
    for (auto const role : {AudioRole::microphone, AudioRole::system, AudioRole::camera, AudioRole::voiceover}) {
        bool const isOther = nameOf(role) != options.track;
        if (isOther && !spokenSounds(project, package, role).empty())
            tracks.push_back(fmt::format("--track {}", nameOf(role)));
    }
    if (tracks.empty()) return "";
    return fmt::format(" {} {} sound.", fmt::join(tracks, " and "), tracks.size() == 1 ? "has" : "have");
}

/// Another engine that could hear the same, as a sentence; nothing where none is ready.
std::string otherEngine(TranscriptionChoices const& choices) {
    Preferences preferences;
    auto engines = transcriptionEngines(EnginePlaces::usual(preferences));
    auto const locale = choices.locale.empty() ? usersLocale() : localeIdentifier(choices.locale).value_or("");
    try {
        auto const broken = chosenEngine(engines, choices.engine, locale).id;
        std::erase_if(engines, [&](auto const& engine) { return engine.id == broken; });
        return fmt::format(" Another engine is ready: --engine {}.", chosenEngine(engines, {}, locale).id);
    } catch (VoiceError const&) {
        return "";
    }
}

/// Says beside a failure what helps against it.
std::string withAdvice(VoiceError const& error, Options const& options) {
    std::string const sentence = error.what();
    using enum VoiceError::Kind;
    if (error.kind == unknownLocale)
        return sentence + " `tavaro transcribe --engines` tells what does, and --locale names another.";
    if (error.kind == noSound) return sentence + otherTracks(options);
    if (error.kind != failed) return sentence;
    auto const advice = otherEngine(options.choices);
    return sentence + (advice.empty() || sentence.ends_with('.') ? "" : ".") + advice;
}

void transcribe(Options const& options) {
    if (options.listsEngines) return printEngines(options.asJSON);
    if (options.package.empty()) throw CLI::RequiredError("PROJECT");
    try {
        auto const made = hear(requestOf(options), options);
        OpenProject open(options.package, LockHolding::whileOpen);
        open.commit(transcriptionStep, [&](DemoProject& project) { keepTranscript(project, made.transcript); });
        print(made, options);
    } catch (VoiceError const& error) {
        throw VoiceError(error.kind, withAdvice(error, options));
    }
}

}

void addTranscribe(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("transcribe", "Turns what is said in the recording into words with their times");
    command->add_option("PROJECT", options->package, "the project, NAME.recproj")->check(notEmpty);
    command->add_option("--locale", options->choices.locale, "the language spoken, as en-US; else the user's own")
        ->check(notEmpty);
    command->add_option("--engine", options->choices.engine, "which engine hears it, else the best that is ready")
        ->check(CLI::IsMember({std::string(whisperEngine), std::string(sphinxEngine)}));
    command->add_option("--track", options->track, "the sound in which somebody speaks")
        ->check(isNameOf<AudioRole>())
        ->capture_default_str();
    command->add_flag("--engines", options->listsEngines,
                      "only tell which engines are here, what they are good for, and how to get a better one");
    command->add_flag("--json", options->asJSON, "print the result as JSON and no progress");
    command->callback([options] { transcribe(*options); });
}

}
