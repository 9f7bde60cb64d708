#include <Tavaro/Agents/Private/UIArguments.h>

#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroAutomation/Input/KeyCombo.h>
#include <TavaroAutomation/Input/UIMouseButton.h>
#include <TavaroAutomation/Values/UIRect.h>

#include <initializer_list>
#include <optional>

namespace tavaro {

namespace {

void expectApp(ToolArguments const& arguments) {
    auto const app = arguments.text("app");
    if (!app || app->empty()) refuseArguments("app is required: its name, e.g. \"Mossfile\", or bundle id.");
}

void expectSeconds(ToolArguments const& arguments) {
    arguments.number("glide", {0, 5});
    arguments.number("hold", {0, 60});
}

void expectTexts(ToolArguments const& arguments, std::initializer_list<char const*> names) {
    for (auto const* const name : names) arguments.text(name);
}

std::optional<UIPoint> point(ToolArguments const& arguments) {
    auto const x = arguments.number("x"), y = arguments.number("y");
    if (x.has_value() != y.has_value()) refuseArguments("x and y go together.");
    return x ? std::optional(UIPoint{*x, *y}) : std::nullopt;
}

void expectClick(ToolArguments const& arguments) {
    expectTexts(arguments, {"app", "title", "element", "role"});
    bool const names = arguments.has("app") && (arguments.has("title") || arguments.has("element"));
    if (!names && !arguments.has("x") && !arguments.has("y"))
        refuseArguments("Say what to click: title (with app), element (with app), or x and y.");
    arguments.oneOf<UIMouseButton>("button");
    arguments.integer("count", {1, 3});
    point(arguments);
    expectSeconds(arguments);
}

void expectScroll(ToolArguments const& arguments) {
    expectTexts(arguments, {"app", "title", "element"});
    constexpr ArgumentLimits pixels{-20000, 20000};
    double const down = arguments.number("down", pixels).value_or(0);
    double const right = arguments.number("right", pixels).value_or(0);
    if (down == 0 && right == 0) refuseArguments("Give down and/or right, in pixels.");
    point(arguments);
    expectSeconds(arguments);
}

void expectShortcut(JSONValue const& key) try {
    auto const* const shortcut = key.as<std::string>();
    parseShortcut(shortcut ? *shortcut : "");
} catch (AutomationError const& error) {
    refuseArguments(error.what());
}

void expectKeys(ToolArguments const& arguments) {
    auto const text = arguments.text("text");
    auto const* const keys = arguments.has("keys") ? arguments.find("keys")->as<JSONValue::Array>() : nullptr;
    if (arguments.has("keys") && !keys) refuseArguments("keys must be a list of texts.");
    if ((!text || text->empty()) && (!keys || keys->empty()))
        refuseArguments("Give text to type and/or keys to press.");
    for (auto const& key : keys ? *keys : JSONValue::Array{}) expectShortcut(key);
    expectSeconds(arguments);
}

}

void expectUIArguments(MCPToolName tool, ToolArguments const& arguments) {
    switch (tool) {
    case MCPToolName::uiClick: return expectClick(arguments);
    case MCPToolName::uiScroll: return expectScroll(arguments);
    case MCPToolName::uiKeys: return expectKeys(arguments);
    case MCPToolName::uiScreenshot:
        expectTexts(arguments, {"app"});
        arguments.integer("max_width", {200, 3840});
        return;
    default: break;
    }
    expectApp(arguments);
    expectTexts(arguments, {"query"});
    arguments.integer("limit", {1, 1000});
}

}
