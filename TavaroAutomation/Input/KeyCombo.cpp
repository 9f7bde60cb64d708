#include <TavaroAutomation/Input/KeyCombo.h>

#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroAutomation/Input/Private/ANSIKeys.h>
#include <TavaroCore/Errors/Excerpt.h>

#include <algorithm>
#include <fmt/format.h>
#include <optional>
#include <string>
#include <utility>

namespace tavaro {

namespace {

constexpr std::pair<std::string_view, ModifierFlag> modifiers[] = {
    {"cmd", commandFlag}, {"command", commandFlag}, {"⌘", commandFlag},       {"shift", shiftFlag},
    {"⇧", shiftFlag},     {"opt", optionFlag},      {"option", optionFlag},   {"alt", optionFlag},
    {"⌥", optionFlag},    {"ctrl", controlFlag},    {"control", controlFlag}, {"⌃", controlFlag},
    {"super", superFlag},
};

std::string lower(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return result;
}

std::optional<std::uint64_t> modifierNamed(std::string_view name) {
    auto const* const found = std::ranges::find(modifiers, name, [](auto const& modifier) { return modifier.first; });
    if (found == std::end(modifiers)) return std::nullopt;
    return found->second;
}

[[noreturn]] void refuse(std::string_view shortcut) {
    throw AutomationError(
        AutomationError::Kind::invalidRequest,
        fmt::format("Can't read the shortcut \"{}\". Use e.g. cmd+shift+4, return, esc, left, f5.", excerpt(shortcut)));
}

}

KeyCombo parseShortcut(std::string_view shortcut) {
    std::string const names = lower(shortcut);
    KeyCombo combo;
    std::string_view rest = names;
    for (auto plus = rest.find('+'); plus != std::string_view::npos; plus = rest.find('+')) {
        auto const flag = modifierNamed(rest.substr(0, plus));
        if (!flag) refuse(shortcut);
        combo.flags |= *flag;
        rest.remove_prefix(plus + 1);
    }
    auto const key = std::ranges::find(ansiKeys(), rest, &ANSIKey::name);
    if (key == ansiKeys().end()) refuse(shortcut);
    combo.keyCode = key->code;
    return combo;
}

}
