#include <Tavaro/Agents/Private/RecordRequest.h>

namespace tavaro {

namespace {

constexpr double shortestSide = 32; // points
constexpr ArgumentLimits countdowns{0, 10};
constexpr ArgumentLimits lengths{1, 600}; // seconds

RecordRequest::Area readArea(ToolArguments const& area) {
    return {.display = area.requiredText("display"),
            .x = area.requiredNumber("x"),
            .y = area.requiredNumber("y"),
            .width = area.requiredNumber("width"),
            .height = area.requiredNumber("height")};
}

/// None for what is no area, in whichever way.
std::optional<RecordRequest::Area> areaIn(ToolArguments const& target) {
    try {
        auto const area = readArea(target.object("area").value());
        bool const isLarge = area.width >= shortestSide && area.height >= shortestSide;
        return isLarge ? std::optional(area) : std::nullopt;
    } catch (MCPToolError const&) {
        return std::nullopt;
    }
}

decltype(RecordRequest::target) targetOf(ToolArguments const& arguments) {
    if (!arguments.has("target")) refuseArguments("target is required.");
    auto const* const given = arguments.find("target")->as<JSONValue::Object>();
    int kinds = 0;
    for (auto const* const kind : {"display", "window", "app", "area"})
        kinds += given && ToolArguments(*given).has(kind);
    if (kinds != 1) refuseArguments("target must name exactly one of display, window, app or area.");
    ToolArguments const target(*given);
    if (target.has("display")) return RecordRequest::Display{target.requiredText("display")};
    if (target.has("window")) return RecordRequest::Window{target.requiredText("window")};
    if (target.has("app")) return RecordRequest::App{target.requiredText("app")};
    if (auto const area = areaIn(target)) return *area;
    refuseArguments("area needs display, x, y, width ≥ 32 and height ≥ 32.");
}

}

RecordRequest recordRequest(ToolArguments const& arguments, RecordingLength length) {
    RecordRequest request{.target = targetOf(arguments)};
    request.aspect = arguments.oneOf<AreaShape>("aspect").value_or(request.aspect);
    request.countdown = static_cast<int>(arguments.integer("countdown", countdowns).value_or(request.countdown));
    if (length == RecordingLength::fixed) {
        request.seconds = arguments.number("seconds", lengths);
        if (!request.seconds) refuseArguments("seconds must be 1–600.");
    }
    request.microphone = arguments.flag("microphone");
    request.systemAudio = arguments.flag("system_audio");
    request.camera = arguments.flag("camera");
    return request;
}

}
