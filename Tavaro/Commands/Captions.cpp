#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Model/Project/StoredProject.h>

#include <TavaroCore/Captions/Subtitles.h>
#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Speech/TranscriptCaptions.h>
#include <TavaroCore/Values/Timecode.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>

namespace tavaro::commands {

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t largestText = 64 << 20; // bytes

struct Options {
    std::string package;
    bool fromTranscript = false;
    CaptionBreaks breaks;
    std::string script;
    double start = 0;
    double duration = 0; // to the end of the edit when it is 0
    std::string subtitles;
    std::string output;
    bool asJSON = false;

    bool makesCaptions() const { return fromTranscript || !script.empty() || !subtitles.empty(); }
};

/// What the command prints for programs.
struct Result {
    std::int64_t count = 0;
    std::vector<CaptionCue> cues;
    std::optional<std::string> path;

    static constexpr auto fields = std::tuple{
        field("count", &Result::count),
        field("cues", &Result::cues),
        field("path", &Result::path),
    };
};

std::string endingOf(std::string const& file) { return CLI::detail::to_lower(fs::path(file).extension().string()); }

std::string subtitleProblem(std::string const& file) {
    auto const ending = endingOf(file);
    return ending == ".srt" || ending == ".vtt" ? "" : "captions are written as .srt or .vtt";
}

std::string textOf(std::string const& file) {
    if (auto text = readWholeFile(file, largestText)) return std::move(*text);
    throw FileError(FileError::Kind::cannotRead, fmt::format("There is no file “{}”.", file));
}

/// Subtitle files have the film's times; the document has the edit's, which begin behind the title card.
double filmOffset(DemoProject const& project) { return project.intro ? std::max(project.intro->duration, 0.0) : 0; }

std::vector<CaptionCue> fromTranscript(DemoProject const& project, Options const& options) {
    if (!project.transcript) throw Error("The project has no transcript to make captions from.");
    auto cues = captionCuesFromTranscript(project, options.breaks);
    if (cues.empty()) throw Error("The edit shows no words of the transcript to make captions from.");
    return cues;
}

std::vector<CaptionCue> fromScript(DemoProject const& project, Options const& options) {
    double const left = project.duration() - options.start;
    double const duration = options.duration > 0 ? std::min(options.duration, left) : left;
    if (!(duration > 0))
        throw Error(fmt::format("The edit is over at {}, so no captions can begin at {}.",
                                Timecode::format(project.duration(), Timecode::Fraction::hundredths),
                                Timecode::format(options.start, Timecode::Fraction::hundredths)));
    auto cues =
        CaptionTrack::cuesFromScript(textOf(options.script), options.start, duration, options.breaks.maxCharacters);
    if (cues.empty()) throw Error(fmt::format("There is no text in “{}”.", options.script));
    return cues;
}

/// What the film does not show any more is left out.
std::vector<CaptionCue> fromSubtitles(DemoProject const& project, Options const& options) {
    std::vector<CaptionCue> cues;
    try {
        cues = readSubtitles(textOf(options.subtitles));
    } catch (SubtitleError const& error) {
        throw SubtitleError(error, fmt::format("“{}”", options.subtitles));
    }
    double const offset = filmOffset(project);
    for (auto& cue : cues) {
        cue.start -= offset;
        for (auto& word : cue.words) {
            word.start -= offset;
            word.end -= offset;
        }
    }
    auto const read = cues.size();
    std::erase_if(cues, [&](CaptionCue const& cue) {
        return cue.range().end() <= 0 || cue.start >= project.duration() || !(cue.duration > 0);
    });
    if (cues.empty())
        throw Error(fmt::format("None of the {} captions in “{}” is within the edit, which is {} long.", read,
                                options.subtitles,
                                Timecode::format(project.duration(), Timecode::Fraction::hundredths)));
    return cues;
}

std::vector<CaptionCue> madeCaptions(DemoProject const& project, Options const& options) {
    if (options.fromTranscript) return fromTranscript(project, options);
    return options.script.empty() ? fromSubtitles(project, options) : fromScript(project, options);
}

void expectCaptions(DemoProject const& project) {
    if (!project.captions.cues.empty()) return;
    throw Error(project.transcript ? "The project has no captions yet; --from-transcript makes them of what is said."
                                   : "The project has neither captions nor a transcript to make them from; "
                                     "--from-script or --import brings some.");
}

void writeSubtitles(DemoProject const& project, std::string const& file) {
    auto const& cues = project.captions.cues;
    double const offset = filmOffset(project);
    writeFileAtomically(file, endingOf(file) == ".vtt" ? webVTTText(cues, offset) : subRipText(cues, offset));
}

std::string counted(std::size_t captions) { return fmt::format("{} caption{}", captions, captions == 1 ? "" : "s"); }

void printCues(std::vector<CaptionCue> const& cues) {
    for (auto const& cue : cues) {
        auto text = cue.text;
        std::replace(text.begin(), text.end(), '\n', ' ');
        fmt::print("{}–{}  {}\n", Timecode::format(cue.start, Timecode::Fraction::hundredths),
                   Timecode::format(cue.range().end(), Timecode::Fraction::hundredths), text);
    }
}

void captions(Options const& options) {
    auto const lock = lockForEditing(options.package);
    auto [package, project] = openProject(options.package);
    if (options.makesCaptions()) {
        project.captions.cues = madeCaptions(project, options);
        project.captions.isEnabled = true;
        project.modifiedAt = Date::now();
    }
    expectCaptions(project);
    if (!options.output.empty()) writeSubtitles(project, options.output);
    if (options.makesCaptions()) package.save(project);
    auto const& cues = project.captions.cues;
    if (options.asJSON) {
        Result result{static_cast<std::int64_t>(cues.size()), cues, {}};
        if (!options.output.empty()) result.path = options.output;
        fmt::print("{}\n", encodeJSON(result));
        return;
    }
    if (options.makesCaptions()) {
        char const* const source = options.fromTranscript   ? "the transcript"
                                   : options.script.empty() ? "the subtitles"
                                                            : "the script";
        fmt::print("Made {} from {}\n", counted(cues.size()), source);
    }
    if (!options.output.empty()) fmt::print("Wrote {} to {}\n", counted(cues.size()), options.output);
    if (!options.makesCaptions() && options.output.empty()) printCues(cues);
}

void addSources(CLI::App& command, Options& options) {
    auto* transcript =
        command.add_flag("--from-transcript", options.fromTranscript, "make the captions of what is said");
    auto* script =
        command.add_option("--from-script", options.script, "make them of a text file, evenly spoken")->check(notEmpty);
    auto* subtitles =
        command.add_option("--import", options.subtitles, "take them from a SubRip or WebVTT file")->check(notEmpty);
    transcript->excludes(script)->excludes(subtitles);
    script->excludes(subtitles);
    command.add_option("--max-characters", options.breaks.maxCharacters, "the length of a caption")
        ->check(CLI::Range(1, 1000))
        ->excludes(subtitles)
        ->capture_default_str();
    command.add_option("--break-on-pause", options.breaks.breakOnPause, "seconds of silence that end a caption")
        ->check(secondsFrom(0, 3600))
        ->needs(transcript)
        ->capture_default_str();
    command.add_option("--start", options.start, "when the script begins, in seconds of the edit")
        ->check(secondsFrom(0, 1e7))
        ->needs(script);
    command.add_option("--duration", options.duration, "how long it lasts; to the end of the edit without")
        ->check(secondsFrom(0.01, 1e7))
        ->needs(script);
}

}

void addCaptions(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("captions", "Makes, shows and writes the captions of a project");
    command->add_option("PROJECT", options->package, "the project, NAME.recproj")->required()->check(notEmpty);
    addSources(*command, *options);
    command->add_option("-o,--output", options->output, "write them for the film, as F.srt or F.vtt")
        ->check(subtitleProblem);
    command->add_flag("--json", options->asJSON, "print the captions as JSON");
    command->callback([options] { captions(*options); });
}

}
