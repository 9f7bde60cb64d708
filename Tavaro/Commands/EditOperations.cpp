#include <Tavaro/Commands/EditOperations.h>

#include <Tavaro/Commands/EditDeclaration.h>
#include <Tavaro/Commands/Names.h>

#include <TavaroCore/Audio/AudioTrack.h>
#include <TavaroCore/Editing/ClipEdits.h>
#include <TavaroCore/Editing/RangeEdits.h>
#include <TavaroCore/Editing/SilenceRemoval.h>
#include <TavaroCore/Editing/TimelineEdits.h>
#include <TavaroCore/Editing/TrackEdits.h>
#include <TavaroCore/Editing/TypingSpeed.h>
#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Project/DemoProject.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>

namespace tavaro::commands {

namespace {

constexpr double endTolerance = 0.01; // lengths are shown in hundredths, and people type what they see

void expectInside(DemoProject const& project, double at) {
    if (at <= project.duration() + endTolerance) return;
    throw Error(fmt::format("{:g} s is past the end of the video, which lasts {:.2f} s.", at, project.duration()));
}

void expectSpan(DemoProject const& project, TimeRange const& range) {
    if (!(range.duration > 0)) {
        throw Error(fmt::format("The end of the span has to come after its start: {:g} s is not after {:g} s.",
                                range.end(), range.start));
    }
    expectInside(project, range.end());
}

std::string trim(DemoProject& project, EditArguments const& arguments) {
    expectSpan(project, arguments.range());
    keepTimeRange(project, arguments.range());
    return "Kept " + shownSpan(arguments.range());
}

std::string cut(DemoProject& project, EditArguments const& arguments) {
    expectSpan(project, arguments.range());
    removeTimeRange(project, arguments.start, arguments.range().duration);
    return "Cut " + shownSpan(arguments.range());
}

std::string speed(DemoProject& project, EditArguments const& arguments) {
    expectSpan(project, arguments.range());
    changeSpeed(project, arguments.range(), arguments.amount);
    return fmt::format("{} plays {:g} times as fast", shownSpan(arguments.range()), arguments.amount);
}

std::string split(DemoProject& project, EditArguments const& arguments) {
    expectInside(project, arguments.start);
    if (!splitClip(project, arguments.start)) {
        throw Error(fmt::format("There is nothing to split at {:g} s: a clip begins or ends there.", arguments.start));
    }
    return "Split at " + shownTime(arguments.start);
}

std::string insert(DemoProject& project, EditArguments const& arguments) {
    expectInside(project, arguments.start);
    insertTime(project, std::min(arguments.start, project.duration()), arguments.amount);
    return fmt::format("The frame at {} is held for {:g} s", shownTime(arguments.start), arguments.amount);
}

/// The clip that is named by its id or by a time at which it is shown.
VideoClip const& clipNamed(DemoProject const& project, std::string const& what) {
    if (auto const id = UUID::parse(what)) {
        for (auto const& clip : project.timeline.clips) {
            if (clip.id == *id) return clip;
        }
        throw Error(fmt::format("The project has no clip {}.", what));
    }
    double const at = number(what).value();
    expectInside(project, at);
    if (auto const* clip = project.timeline.clip(std::min(at, project.duration()))) return *clip;
    throw Error(fmt::format("The video shows no clip at {:g} s.", at));
}

std::string mute(DemoProject& project, EditArguments const& arguments) {
    auto const* verb = arguments.isSwitched ? "Unmuted" : "Muted";
    if (auto const role = enumNamed<AudioRole>(arguments.what)) {
        setTrackMuted(project, *role, !arguments.isSwitched);
        return fmt::format("{} the {} track", verb, arguments.what);
    }
    auto const clip = clipNamed(project, arguments.what);
    setMuted(project, clip.id, !arguments.isSwitched);
    return fmt::format("{} the clip at {}", verb, shownSpan(clip.range()));
}

std::string volume(DemoProject& project, EditArguments const& arguments) {
    setTrackGain(project, enumNamed<AudioRole>(arguments.what).value(), arguments.amount);
    return fmt::format("The {} track plays at {:g} times its volume", arguments.what, arguments.amount);
}

std::string removeSilence(DemoProject& project, EditArguments const&) {
    auto const removed = removeAllSilence(project);
    if (removed.count == 0) return "There is no silence to remove";
    return "Removed " + counted(static_cast<std::size_t>(removed.count), "silence");
}

std::string speedUpTyping(DemoProject& project, EditArguments const& arguments) {
    auto const done = tavaro::speedUpTyping(project, arguments.amount);
    if (done.count == 0) return "There is no typing to speed up";
    return fmt::format("Sped up typing {:g} times in {}", arguments.amount,
                       counted(static_cast<std::size_t>(done.count), "place"));
}

std::string whatToMute(std::string const& text) {
    auto const at = number(text);
    if (enumNamed<AudioRole>(text) || UUID::parse(text) || (at && *at >= 0)) return "";
    return fmt::format(
        "“{}” is no track (microphone, system, voiceover, music, camera), no time in seconds and no clip's id", text);
}

}

void addTimeOperations(CLI::App& edit, SharedEditOptions const& options) {
    declareEdit(edit, options, "trim", "Keeps only that span", trim).span();
    declareEdit(edit, options, "cut", "Takes that span out", cut).span();

    auto fast = declareEdit(edit, options, "speed", "Plays that span faster, or slower below 1", speed).span();
    fast.command->add_option("RATE", fast.arguments->amount, "times as fast, 0.25 to 16")
        ->required()
        ->check(numberFrom(slowestRate, fastestRate, "a rate"));

    declareEdit(edit, options, "split", "Splits the clip at a time in two", split)
        .at("TIME", &EditArguments::start, "where, in seconds");

    auto held = declareEdit(edit, options, "insert", "Inserts time, in which the frame on show is held", insert)
                    .at("TIME", &EditArguments::start, "where, in seconds");
    held.command->add_option("SECONDS", held.arguments->amount, "how long")
        ->required()
        ->check(secondsFrom(0.001, 86400));
}

void addSoundOperations(CLI::App& edit, SharedEditOptions const& options) {
    auto muted = declareEdit(edit, options, "mute", "Silences a track, or the recorded sound under one clip", mute);
    muted.command->add_option("WHAT", muted.arguments->what, "a track, a time at which the clip is shown, or its id")
        ->required()
        ->check(whatToMute);
    muted.command->add_flag("--off", muted.arguments->isSwitched, "let it be heard again");

    auto loud = declareEdit(edit, options, "volume", "Sets how loud a track is", volume);
    loud.command->add_option("TRACK", loud.arguments->what)->required()->check(isNameOf<AudioRole>());
    loud.command->add_option("GAIN", loud.arguments->amount, "0 to 2; 1 is as recorded")
        ->required()
        ->check(numberFrom(0, loudestGain, "a gain"));
}

void addCleanUpOperations(CLI::App& edit, SharedEditOptions const& options) {
    declareEdit(edit, options, "remove-silence", "Takes out the silences that polishing found", removeSilence);

    auto typing = declareEdit(edit, options, "speed-up-typing", "Plays long typing faster", speedUpTyping);
    typing.arguments->amount = 2;
    typing.command->add_option("FACTOR", typing.arguments->amount, "times as fast, up to 16; 2 unless told")
        ->check(numberFrom(1, fastestRate, "a factor"));
}

}
