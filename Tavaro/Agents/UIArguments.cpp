#include <Tavaro/Agents/Private/UIArguments.h>

#include <TavaroAutomation/Values/UIRect.h>
#include <TavaroCore/Errors/Excerpt.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <optional>

namespace tavaro {

namespace {

enum class ClickButton { left, right };

constexpr std::array<std::string_view, 2> namesOf(ClickButton) { return {"left", "right"}; }

constexpr std::array<std::string_view, 9> modifiers{"cmd", "command", "ctrl",  "control", "alt",
                                                    "opt", "option",  "shift", "fn"};
constexpr std::array<std::string_view, 18> namedKeys{
    "return", "enter", "esc",  "escape", "tab", "space",  "delete",   "backspace",     "left",
    "right",  "up",    "down", "home",   "end", "pageup", "pagedown", "forwarddelete", "help"};

template<class Names> bool isIn(Names const& names, std::string_view name) {
    return std::ranges::find(names, name) != names.end();
}

bool isFunctionKey(std::string_view key) {
    if (key.size() < 2 || key.size() > 3 || key[0] != 'f') return false;
    int number = 0;
    for (char const c : key.substr(1)) {
        if (c < '0' || c > '9') return false;
        number = number * 10 + (c - '0');
    }
    return key[1] != '0' && number <= 20;
}

/// One character, in whichever script.
bool isCharacter(std::string_view key) {
    auto const starts = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; };
    return !key.empty() && std::ranges::count_if(key, starts) == 1;
}

/// "cmd+shift+4", "return"; the last part may be the plus itself.
bool isShortcut(std::string_view text) {
    while (true) {
        auto const plus = text.find('+', 1);
        if (plus == std::string_view::npos) break;
        if (!isIn(modifiers, text.substr(0, plus))) return false;
        text.remove_prefix(plus + 1);
        if (text.empty()) return false;
    }
    return isCharacter(text) || isFunctionKey(text) || isIn(namedKeys, text);
}

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
    arguments.oneOf<ClickButton>("button");
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

void expectKeys(ToolArguments const& arguments) {
    auto const text = arguments.text("text");
    auto const* const keys = arguments.has("keys") ? arguments.find("keys")->as<JSONValue::Array>() : nullptr;
    if (arguments.has("keys") && !keys) refuseArguments("keys must be a list of texts.");
    if ((!text || text->empty()) && (!keys || keys->empty()))
        refuseArguments("Give text to type and/or keys to press.");
    for (auto const& key : keys ? *keys : JSONValue::Array{}) {
        auto const* const shortcut = key.as<std::string>();
        if (shortcut && isShortcut(*shortcut)) continue;
        refuseArguments(fmt::format("Can't read the shortcut \"{}\". Use e.g. cmd+shift+4, return, esc, left, f5.",
                                    shortcut ? excerpt(*shortcut) : ""));
    }
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
