#include <Tavaro/Agents/Private/TimelineOp.h>

#include <TavaroCore/Project/DemoProject.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace tavaro {

namespace {

enum class TimelineEdit { trim, cut, speed, split, mute, volume };

constexpr std::array<std::string_view, 6> namesOf(TimelineEdit) {
    return {"trim", "cut", "speed", "split", "mute", "volume"};
}

constexpr double endTolerance = 0.01; // answers say lengths in hundredths, and clients send them back

template<class Span> Span spanOf(ToolArguments const& arguments, DemoProject const& project) {
    Span span;
    span.start = arguments.requiredNumber("start");
    span.end = arguments.requiredNumber("end");
    if (!(span.end > span.start)) refuseArguments("end must be after start.");
    for (double const time : {span.start, span.end})
        if (time > project.duration() + endTolerance) refuseArguments(fmt::format("{} is past the end.", time));
    return span;
}

operations::ChangeSpeed speedOf(ToolArguments const& arguments, DemoProject const& project) {
    auto change = spanOf<operations::ChangeSpeed>(arguments, project);
    auto const rate = arguments.number("rate", {slowestRate, fastestRate});
    if (!rate) refuseArguments("rate must be 0.25–16.");
    change.rate = *rate;
    return change;
}

operations::Split splitOf(ToolArguments const& arguments, DemoProject const& project) {
    double const time = arguments.requiredNumber("time");
    if (!(time > 0 && time < project.duration())) refuseArguments("time must be inside the video.");
    return {time};
}

AudioRole trackOf(ToolArguments const& arguments, DemoProject const& project) {
    auto const role = arguments.requiredOneOf<AudioRole>("track");
    if (!std::ranges::any_of(project.audioTracks, [&](auto const& track) { return track.role == role; }))
        refuseArguments(fmt::format("This project has no {} track.", nameOf(role)));
    return role;
}

operations::Mute muteOf(ToolArguments const& arguments, DemoProject const& project) {
    auto const role = trackOf(arguments, project);
    auto const* const muted = arguments.has("muted") ? arguments.find("muted")->as<bool>() : nullptr;
    if (!muted) refuseArguments("mute needs \"muted\".");
    return {.what = std::string(nameOf(role)), .muted = *muted};
}

operations::ChangeVolume volumeOf(ToolArguments const& arguments, DemoProject const& project) {
    auto const role = trackOf(arguments, project);
    auto const level = arguments.number("level", {0, loudestGain});
    if (!level) refuseArguments("level must be 0–2.");
    return {.track = role, .level = *level};
}

}

Operation timelineOp(ToolArguments const& arguments, DemoProject const& project) {
    switch (arguments.requiredOneOf<TimelineEdit>("op")) {
    case TimelineEdit::trim: return spanOf<operations::Trim>(arguments, project);
    case TimelineEdit::cut: return spanOf<operations::Cut>(arguments, project);
    case TimelineEdit::speed: return speedOf(arguments, project);
    case TimelineEdit::split: return splitOf(arguments, project);
    case TimelineEdit::mute: return muteOf(arguments, project);
    case TimelineEdit::volume: break;
    }
    return volumeOf(arguments, project);
}

}
