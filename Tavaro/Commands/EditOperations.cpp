#include <Tavaro/Commands/EditOperations.h>

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
#include <TavaroCore/Values/Timecode.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <limits>

namespace tavaro::commands {

namespace {

constexpr double endTolerance = 0.01; // lengths are shown in hundredths, and people type what they see

std::string time(double seconds) { return Timecode::format(seconds, Timecode::Fraction::hundredths); }

std::optional<double> number(std::string const& text) {
    double value = 0;
    auto const [end, code] = std::from_chars(text.data(), text.data() + text.size(), value);
    bool const isNumber = code == std::errc{} && end == text.data() + text.size() && std::isfinite(value);
    return isNumber ? std::optional(value) : std::nullopt;
}

/// A number of that range; what it means is in the sentence.
CLI::Validator between(double least, double most, std::string sentence) {
    return CLI::Validator(
        [=](std::string const& text) {
            auto const value = number(text);
            return value && *value >= least && *value <= most ? std::string() : sentence + ", not '" + text + "'";
        },
        "NUMBER");
}

CLI::Validator seconds() {
    return between(0, std::numeric_limits<double>::max(), "a time is a number of seconds from 0 on");
}

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

std::string span(TimeRange const& range) { return time(range.start) + "–" + time(range.end()); }

std::string counted(int count, std::string const& one, std::string const& more) {
    return fmt::format("{} {}", count, count == 1 ? one : more);
}

/// The parameters of an operation; each uses its own.
struct Arguments {
    double start = 0;
    double end = 0;
    double amount = 0;
    std::string what;
    bool isOff = false;

    TimeRange range() const { return {start, end - start}; }
};

using Operation = std::string (*)(DemoProject&, Arguments const&);

/// Declares an operation; its parameters are for the caller to add to what comes back.
struct Declared {
    CLI::App* command;
    std::shared_ptr<Arguments> arguments;

    Declared& at(std::string const& name, double Arguments::*member, std::string const& text) {
        command->add_option(name, (*arguments).*member, text)->required()->check(seconds());
        return *this;
    }
    Declared& span() {
        return at("FROM", &Arguments::start, "where it begins, in seconds").at("TO", &Arguments::end, "where it ends");
    }
};

Declared declare(CLI::App& edit, SharedEditOptions const& options, std::string const& name, std::string const& text,
                 Operation operation) {
    Declared declared{edit.add_subcommand(name, text), std::make_shared<Arguments>()};
    declared.command->fallthrough();
    declared.command->callback([=, arguments = declared.arguments] {
        runEdit(*options, name, [&](DemoProject& project) { return operation(project, *arguments); });
    });
    return declared;
}

std::string trim(DemoProject& project, Arguments const& arguments) {
    expectSpan(project, arguments.range());
    keepTimeRange(project, arguments.range());
    return "Kept " + span(arguments.range());
}

std::string cut(DemoProject& project, Arguments const& arguments) {
    expectSpan(project, arguments.range());
    auto edited = project;
    removeTimeRange(edited, arguments.start, arguments.range().duration);
    if (edited.timeline.clips.empty()) {
        throw Error("The cut would leave nothing of the video; choose a shorter span.");
    }
    project = std::move(edited);
    return "Cut " + span(arguments.range());
}

std::string speed(DemoProject& project, Arguments const& arguments) {
    expectSpan(project, arguments.range());
    changeSpeed(project, arguments.range(), arguments.amount);
    return fmt::format("{} plays {:g} times as fast", span(arguments.range()), arguments.amount);
}

std::string split(DemoProject& project, Arguments const& arguments) {
    expectInside(project, arguments.start);
    if (!splitClip(project, arguments.start)) {
        throw Error(fmt::format("There is nothing to split at {:g} s: a clip begins or ends there.", arguments.start));
    }
    return "Split at " + time(arguments.start);
}

std::string insert(DemoProject& project, Arguments const& arguments) {
    expectInside(project, arguments.start);
    insertTime(project, std::min(arguments.start, project.duration()), arguments.amount);
    return fmt::format("The frame at {} is held for {:g} s", time(arguments.start), arguments.amount);
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

std::string mute(DemoProject& project, Arguments const& arguments) {
    auto const* verb = arguments.isOff ? "Unmuted" : "Muted";
    if (auto const role = enumNamed<AudioRole>(arguments.what)) {
        setTrackMuted(project, *role, !arguments.isOff);
        return fmt::format("{} the {} track", verb, arguments.what);
    }
    auto const clip = clipNamed(project, arguments.what);
    setMuted(project, clip.id, !arguments.isOff);
    return fmt::format("{} the clip at {}", verb, span(clip.range()));
}

std::string volume(DemoProject& project, Arguments const& arguments) {
    setTrackGain(project, enumNamed<AudioRole>(arguments.what).value(), arguments.amount);
    return fmt::format("The {} track plays at {:g} times its volume", arguments.what, arguments.amount);
}

std::string removeSilence(DemoProject& project, Arguments const&) {
    auto const removed = removeAllSilence(project);
    if (removed.count == 0) return "There is no silence to remove";
    return "Removed " + counted(removed.count, "silence", "silences");
}

std::string speedUpTyping(DemoProject& project, Arguments const& arguments) {
    auto const done = tavaro::speedUpTyping(project, arguments.amount);
    if (done.count == 0) return "There is no typing to speed up";
    return fmt::format("Sped {} of typing up {:g} times", counted(done.count, "stretch", "stretches"),
                       arguments.amount);
}

std::string whatToMute(std::string const& text) {
    auto const at = number(text);
    if (enumNamed<AudioRole>(text) || UUID::parse(text) || (at && *at >= 0)) return "";
    return "what is muted is a track (microphone, system, voiceover, music or camera), a time in seconds, or a clip's "
           "id, not '" +
           text + "'";
}

}

void addTimeOperations(CLI::App& edit, SharedEditOptions const& options) {
    declare(edit, options, "trim", "Keeps only that span", trim).span();
    declare(edit, options, "cut", "Takes that span out", cut).span();

    auto fast = declare(edit, options, "speed", "Plays that span faster, or slower below 1", speed).span();
    fast.command->add_option("RATE", fast.arguments->amount, "times as fast, 0.25 to 16")
        ->required()
        ->check(between(slowestRate, fastestRate, "a rate is a number from 0.25 to 16"));

    declare(edit, options, "split", "Splits the clip at a time in two", split)
        .at("TIME", &Arguments::start, "where, in seconds");

    auto held = declare(edit, options, "insert", "Inserts time, in which the frame on show is held", insert)
                    .at("TIME", &Arguments::start, "where, in seconds");
    held.command->add_option("SECONDS", held.arguments->amount, "how long")
        ->required()
        ->check(between(0.001, 86400, "the inserted time is a number of seconds from 0.001 to 86400"));
}

void addSoundOperations(CLI::App& edit, SharedEditOptions const& options) {
    auto muted = declare(edit, options, "mute", "Silences a track, or the recorded sound under one clip", mute);
    muted.command->add_option("WHAT", muted.arguments->what, "a track, a time at which the clip is shown, or its id")
        ->required()
        ->check(CLI::Validator(whatToMute, "TRACK|TIME|ID"));
    muted.command->add_flag("--off", muted.arguments->isOff, "let it be heard again");

    auto loud = declare(edit, options, "volume", "Sets how loud a track is", volume);
    loud.command->add_option("TRACK", loud.arguments->what)->required()->check(isNameOf<AudioRole>());
    loud.command->add_option("GAIN", loud.arguments->amount, "0 to 2; 1 is as recorded")
        ->required()
        ->check(between(0, loudestGain, "a gain is a number from 0 to 2"));
}

void addCleanUpOperations(CLI::App& edit, SharedEditOptions const& options) {
    declare(edit, options, "remove-silence", "Takes out the silences that polishing found", removeSilence);

    auto typing = declare(edit, options, "speed-up-typing", "Plays long typing faster", speedUpTyping);
    typing.arguments->amount = 2;
    typing.command->add_option("FACTOR", typing.arguments->amount, "times as fast, up to 16; 2 unless told")
        ->check(between(1, fastestRate, "a factor is a number from 1 to 16"));
}

}
