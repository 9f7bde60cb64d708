#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/OperationFlags.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Commands/TextFile.h>
#include <Tavaro/Model/Operations/CaptionListing.h>
#include <Tavaro/Model/Operations/Perform.h>
#include <Tavaro/Model/Project/OpenProject.h>

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

struct Options {
    std::string package;
    bool fromTranscript = false;
    std::string script;    // a file
    std::string subtitles; // a file
    std::int64_t maxCharacters = CaptionBreaks{}.maxCharacters;
    operations::CaptionsFromTranscript transcriptMaking;
    operations::CaptionsFromScript scriptMaking;
    std::string output;
    PendingFile::IfTaken ifTaken = PendingFile::IfTaken::refuse;
    bool asJSON = false;

    bool makesCaptions() const { return fromTranscript || !script.empty() || !subtitles.empty(); }
};

std::string subtitleProblem(std::string const& file) {
    auto const ending = endingOf(file);
    return ending == ".srt" || ending == ".vtt" ? "" : "captions are written as .srt or .vtt";
}

/// The operation that makes them, with the text of the file that it takes them from.
Operation operationOf(Options const& options) {
    if (options.fromTranscript) {
        auto making = options.transcriptMaking;
        making.maxCharacters = options.maxCharacters;
        return making;
    }
    if (options.script.empty())
        return operations::CaptionsFromSubtitles{.subtitles = readText(options.subtitles, Dash::isFile),
                                                 .file = options.subtitles};
    auto making = options.scriptMaking;
    making.script = readText(options.script, Dash::isFile);
    making.file = options.script;
    making.maxCharacters = options.maxCharacters;
    return making;
}

void expectCaptions(DemoProject const& project) {
    if (!project.captions.cues.empty()) return;
    throw Error(project.transcript ? "The project has no captions yet; --from-transcript makes them of what is said."
                                   : "The project has neither captions nor a transcript to make them from; "
                                     "--from-script or --import brings some.");
}

void writeSubtitles(DemoProject const& project, Options const& options) {
    auto const& cues = project.captions.cues;
    double const offset = project.introDuration(); // files have the film's times, which begin with the title card
    auto const text = endingOf(options.output) == ".vtt" ? webVTTText(cues, offset) : subRipText(cues, offset);
    writeFileAtomically(options.output, text, options.ifTaken);
}

void printCues(std::vector<CaptionCue> const& cues) {
    for (auto const& cue : cues) {
        auto text = cue.text;
        std::replace(text.begin(), text.end(), '\n', ' ');
        terminal::say("{}–{}  {}\n", Timecode::format(cue.start, Timecode::Fraction::hundredths),
                      Timecode::format(cue.range().end(), Timecode::Fraction::hundredths), text);
    }
}

/// Makes them; a file that cannot be written leaves the project as it is. Says what was made.
std::string made(OpenProject& open, Options const& options) {
    auto const operation = operationOf(options);
    std::string summary;
    open.commit(infoOf(operation).title, [&](DemoProject& project) {
        summary = perform(project, operation).summary;
        if (!options.output.empty()) writeSubtitles(project, options);
    });
    return summary;
}

void captions(Options const& options) {
    if (!options.output.empty()) expectWritable(options.output, options.ifTaken);
    OpenProject open(options.package, LockHolding::whileOpen);
    auto const summary = options.makesCaptions() ? made(open, options) : "";
    expectCaptions(open.document());
    if (!options.makesCaptions() && !options.output.empty()) writeSubtitles(open.document(), options);
    auto const& cues = open.document().captions.cues;
    if (options.asJSON) {
        CaptionListing listing{static_cast<std::int64_t>(cues.size()), cues, {}};
        if (!options.output.empty()) listing.path = options.output;
        terminal::sayJSON(encodeJSON(listing));
        return;
    }
    if (options.makesCaptions()) terminal::say("{}\n", summary);
    if (!options.output.empty()) terminal::say("Wrote {} to {}\n", counted(cues.size(), "caption"), options.output);
    if (!options.makesCaptions() && options.output.empty()) printCues(cues);
}

void addSources(CLI::App& command, Options& options) {
    using namespace operations;
    auto* transcript =
        command.add_flag("--from-transcript", options.fromTranscript, std::string(CaptionsFromTranscript::info.help));
    auto* script = command.add_option("--from-script", options.script, std::string(CaptionsFromScript::info.help))
                       ->check(notEmpty);
    auto* subtitles = command.add_option("--import", options.subtitles, std::string(CaptionsFromSubtitles::info.help))
                          ->check(notEmpty);
    transcript->excludes(script)->excludes(subtitles);
    script->excludes(subtitles);
    auto const lengths = CaptionsFromTranscript::parameters[0].range.value();
    command.add_option("--max-characters", options.maxCharacters, "the length of a caption")
        ->check(CLI::Range(static_cast<int>(lengths.least), static_cast<int>(lengths.most)))
        ->excludes(subtitles)
        ->capture_default_str();
    declareMember(command, options.transcriptMaking, &CaptionsFromTranscript::breakOnPause)
        ->needs(transcript)
        ->capture_default_str();
    declareMember(command, options.scriptMaking, &CaptionsFromScript::start)->needs(script);
    declareMember(command, options.scriptMaking, &CaptionsFromScript::duration)->needs(script);
}

}

void addCaptions(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("captions", "Makes, shows and writes the captions of a project");
    command->add_option("PROJECT", options->package, "the project, NAME.recproj")->required()->check(notEmpty);
    addSources(*command, *options);
    command->add_option("-o,--output", options->output, "write them for the film, as F.srt or F.vtt")
        ->check(subtitleProblem);
    addOverwriting(*command, options->ifTaken);
    command->add_flag("--json", options->asJSON, "print the captions as JSON");
    command->callback([options] { captions(*options); });
}

}
