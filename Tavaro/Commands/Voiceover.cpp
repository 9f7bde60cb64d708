#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/KeyAdvice.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/ProgressLine.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Model/Voice/MachineVoices.h>
#include <Tavaro/Model/Voice/VoiceoverJob.h>
#include <Tavaro/Model/Voice/VoiceoverListing.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Values/Timecode.h>
#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Voiceover/LineAudio.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace tavaro::commands {

namespace {

struct Options {
    std::string package;
    std::string voice;
    std::optional<double> speed;
    std::vector<std::int64_t> only; // lines, from 1
    VoiceoverTaking taking;
    bool estimatesOnly = false;
    bool asJSON = false;
};

constexpr double slowest = 0.5;
constexpr double fastest = 2;
constexpr std::int64_t mostLines = 100'000; // of a script

std::vector<VoiceoverSegment> const& linesOf(DemoProject const& project) {
    if (!project.voiceover || project.voiceover->segments.empty())
        throw Error("The project has no script to speak yet; `tavaro script` drafts one.");
    return project.voiceover->segments;
}

std::vector<UUID> chosenLines(DemoProject const& project, std::vector<std::int64_t> const& numbers) {
    auto const& lines = linesOf(project);
    std::vector<UUID> ids;
    for (auto const number : numbers) {
        if (number < 1 || static_cast<std::size_t>(number) > lines.size())
            throw Error(fmt::format("There is no line {}: the script has {}.", number, counted(lines.size(), "line")));
        ids.push_back(lines[static_cast<std::size_t>(number - 1)].id);
    }
    return ids;
}

VoiceoverRequest requestOf(DemoProject const& project, Options const& options, VoiceService service) {
    return {.plan = *project.voiceover,
            .voice = options.voice,
            .speed = options.speed,
            .only = chosenLines(project, options.only),
            .service = std::move(service)};
}

/// What came until Ctrl-C is part of the result.
GeneratedVoiceover generate(OpenProject const& open, VoiceoverRequest request, Options const& options) {
    MainQueue queue;
    auto job = voiceoverJob(queue, open.package(), std::move(request));
    Interruption const interruption(
        {.farewell = "\nEnded at once. What was spoken is found again; what was under way is lost.\n"});
    ProgressLine line("Speaking", options.asJSON ? ProgressLine::Output::silent : ProgressLine::Output::automatic);
    job.onProgress([&](VoiceoverProgress const& progress) {
        if (interruption.isRequested()) return;
        line.text(fmt::format("{} of {}", progress.done, counted(static_cast<std::size_t>(progress.total), "line")));
    });
    job.start();
    queue.runUntil([&] {
        if (interruption.isRequested()) {
            job.cancel();
            line.text("the lines under way; Ctrl-C again ends at once");
        }
        return job.isFinished();
    });
    auto& generated = job.result();
    line.finish(fmt::format("{} new", counted(generated.lines.newlySpoken, "line")));
    return std::move(generated);
}

bool isToBeSpoken(ListedLine const& line) { return !line.isSpoken && !line.failure && hasWords(line.text); }

void printText(VoiceoverListing const& listing) {
    for (auto const& line : listing.lines) {
        terminal::say("{:>4}  {}–{}  {}{}\n", line.number, Timecode::format(line.start, Timecode::Fraction::hundredths),
                      Timecode::format(line.end, Timecode::Fraction::hundredths), line.text,
                      isToBeSpoken(line) ? "  (to be spoken)" : "");
        if (line.failure) terminal::tell("      not spoken: {}\n", *line.failure);
    }
    terminal::say("{} by {}, {} new. The video is {} long.\n",
                  counted(static_cast<std::size_t>(listing.spoken), "line"),
                  listing.voiceName.empty() ? listing.voice : listing.voiceName, listing.newlySpoken,
                  Timecode::format(listing.duration, Timecode::Fraction::hundredths));
    auto const more = std::ranges::count_if(listing.lines, isToBeSpoken);
    if (more > 0) terminal::say("{} more {} to be spoken in this voice.\n", more, more == 1 ? "line is" : "lines are");
}

/// What was spoken is saved by now.
void expectAll(VoiceoverListing const& listing) {
    if (listing.isCancelled) throw JobCancelled("The voiceover was cancelled; the lines spoken until then are kept.");
    if (listing.unspoken == 0) return;
    throw Error(fmt::format("{} of {} not spoken{}", listing.unspoken,
                            counted(static_cast<std::size_t>(listing.asked), "line"),
                            listing.stopped ? ": " + *listing.stopped : "."));
}

/// A service has more voices than those that are offered before it is asked.
void tellOfUnknown(VoiceSettings const& voice, OfferedVoices const& offered) {
    auto const isIt = [&](Voice const& one) { return one.id == voice.voiceID; };
    if (std::ranges::any_of(offered.voices, isIt)) return;
    if (isSystemVoice(voice.voiceID)) return terminal::tell("{}\n", noSuchVoice(voice.voiceID).what());
    terminal::tell("“{}” is none of the voices known here; it speaks if your ElevenLabs account has it.\n",
                   voice.voiceID);
}

void estimate(OpenProject const& open, VoiceoverRequest request, Options const& options) {
    auto const offered = request.service.offered();
    request.service.offered = [&] { return offered; };
    tellOfUnknown(voiceOf(request, offered), offered);
    auto const cost = voiceoverCost(open.package(), request);
    if (options.asJSON) return terminal::sayJSON(encodeJSON(cost));
    terminal::say("{}, {} to be spoken by {}{}\n", counted(static_cast<std::size_t>(cost.lines), "line"),
                  counted(static_cast<std::size_t>(cost.characters), "character"), cost.voice,
                  cost.isPaid ? ", from your ElevenLabs account" : "");
}

void speak(OpenProject& open, VoiceoverRequest request, Options const& options) {
    auto const generated = generate(open, std::move(request), options);
    open.commit(voiceoverStep,
                [&](DemoProject& project) { takeIn(project, open.package(), generated, options.taking); });
    auto const listing = listingOf(open.document(), generated);
    if (options.asJSON)
        terminal::sayJSON(encodeJSON(listing));
    else
        printText(listing);
    expectAll(listing);
}

void voiceover(Options const& options) {
    OpenProject open(options.package);
    linesOf(open.document());
    auto request = requestOf(open.document(), options, machineVoices());
    if (options.estimatesOnly) return estimate(open, std::move(request), options);
    try {
        speak(open, std::move(request), options);
    } catch (VoiceError const& error) {
        throw withKeyAdvice(error);
    }
}

void addLongLines(CLI::App& command, Options& options) {
    auto& longLines = options.taking.longLines;
    auto* hold = command.add_flag_callback(
        "--hold-frame", [&] { longLines = LongLines::holdTheFrame; },
        "where a line is longer than the time to the next action, hold the frame; the project remembers it");
    command
        .add_flag_callback(
            "--push", [&] { longLines = LongLines::pushTheNext; }, "or let the next lines come later")
        ->excludes(hold);
}

}

void addVoiceover(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("voiceover", "Speaks the project's script and lays it on the video");
    command->add_option("PROJECT", options->package, "the project, NAME.recproj")->required()->check(notEmpty);
    command
        ->add_option("--voice", options->voice,
                     "who speaks, by id or name in `tavaro voices`; the project remembers it")
        ->check(notEmpty);
    command->add_option("--speed", options->speed, "how fast, 0.5 to 2; the project remembers it")
        ->check(CLI::Range(slowest, fastest));
    command->add_option("--only", options->only, "only these lines, by their numbers; else all that changed")
        ->check(CLI::Range(std::int64_t{1}, mostLines));
    command->add_flag_callback(
        "--captions", [options] { options->taking.captions = VoiceoverCaptions::made; },
        "make captions of what is spoken");
    addLongLines(*command, *options);
    command->add_flag("--estimate", options->estimatesOnly, "only tell how much there is to be spoken");
    command->add_flag("--json", options->asJSON, "print the lines as JSON and no progress");
    command->callback([options] { voiceover(*options); });
}

}
