#include <Tavaro/Agents/UIArguments.h>

#include <Tavaro/Agents/Private/ToolArguments.h>

#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroAutomation/Input/KeyCombo.h>

#include <optional>

namespace tavaro::uiArguments {

namespace {

constexpr ArgumentLimits glideSeconds{0, 5};
constexpr ArgumentLimits holdSeconds{0, 60};

std::optional<UIPoint> point(ToolArguments const& arguments) {
    auto const x = arguments.number("x"), y = arguments.number("y");
    if (x.has_value() != y.has_value()) refuseArguments("x and y go together.");
    return x ? std::optional(UIPoint{*x, *y}) : std::nullopt;
}

/// Without the point, whose faults are told of after those of all else.
UITarget target(ToolArguments const& arguments) {
    return {.app = arguments.text("app").value_or(""),
            .title = arguments.text("title").value_or(""),
            .role = arguments.text("role").value_or(""),
            .element = arguments.text("element").value_or("")};
}

[[noreturn]] void refuseWithoutApp() { refuseArguments("app is required: its name, e.g. \"Mossfile\", or bundle id."); }

/// An element is nowhere without its application; it is not left out for a point or the pointer's place.
void expectApp(UITarget const& target) {
    bool const isNamed = !target.title.empty() || !target.element.empty();
    if (isNamed && target.app.empty()) refuseWithoutApp();
}

/// Of a click or a scroll; the point is read after what is its own.
template<class Request> void readMotion(Request& request, ToolArguments const& arguments) {
    request.target.point = point(arguments);
    request.glide = arguments.number("glide", glideSeconds).value_or(request.glide);
    request.hold = arguments.number("hold", holdSeconds).value_or(request.hold);
}

std::string shortcut(JSONValue const& key) try {
    auto const* const text = key.as<std::string>();
    parseShortcut(text ? *text : "");
    return *text;
} catch (AutomationError const& error) {
    refuseArguments(error.what());
}

}

std::string app(JSONValue::Object const& arguments) {
    auto const app = ToolArguments(arguments).text("app");
    if (!app || app->empty()) refuseWithoutApp();
    return *app;
}

UIElementsRequest elements(JSONValue::Object const& given) {
    ToolArguments const arguments(given);
    UIElementsRequest request{.app = app(given), .query = arguments.text("query").value_or("")};
    if (auto const limit = arguments.integer("limit", {1, 1000})) request.limit = static_cast<std::size_t>(*limit);
    return request;
}

UIClickRequest click(JSONValue::Object const& given) {
    ToolArguments const arguments(given);
    UIClickRequest request{.target = target(arguments)};
    if (!request.target.isElement() && !arguments.has("x") && !arguments.has("y"))
        refuseArguments("Say what to click: title (with app), element (with app), or x and y.");
    expectApp(request.target);
    request.button = arguments.oneOf<UIMouseButton>("button").value_or(request.button);
    request.count = static_cast<int>(arguments.integer("count", {1, 3}).value_or(request.count));
    readMotion(request, arguments);
    return request;
}

UIScrollRequest scroll(JSONValue::Object const& given) {
    ToolArguments const arguments(given);
    constexpr ArgumentLimits pixels{-20000, 20000};
    UIScrollRequest request{.target = target(arguments),
                            .down = arguments.number("down", pixels).value_or(0),
                            .right = arguments.number("right", pixels).value_or(0)};
    if (request.down == 0 && request.right == 0) refuseArguments("Give down and/or right, in pixels.");
    expectApp(request.target);
    readMotion(request, arguments);
    return request;
}

UIKeysRequest keys(JSONValue::Object const& given) {
    ToolArguments const arguments(given);
    UIKeysRequest request{.text = arguments.text("text").value_or("")};
    auto const* const keys = arguments.has("keys") ? arguments.find("keys")->as<JSONValue::Array>() : nullptr;
    if (arguments.has("keys") && !keys) refuseArguments("keys must be a list of texts.");
    if (request.text.empty() && (!keys || keys->empty())) refuseArguments("Give text to type and/or keys to press.");
    for (auto const& key : keys ? *keys : JSONValue::Array{}) request.keys.push_back(shortcut(key));
    request.hold = arguments.number("hold", holdSeconds).value_or(request.hold);
    return request;
}

UIScreenshotRequest screenshot(JSONValue::Object const& given) {
    ToolArguments const arguments(given);
    UIScreenshotRequest request{.app = arguments.text("app").value_or("")};
    if (auto const side = arguments.integer("max_width", {200, 3840})) request.maxWidth = static_cast<int>(*side);
    return request;
}

}
