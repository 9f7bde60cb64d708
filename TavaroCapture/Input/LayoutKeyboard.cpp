#include <TavaroCapture/Input/Private/LayoutKeyboard.h>

#include <TavaroCapture/Events/Private/KeyChord.h>
#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Files/AtomicFile.h>

#include <algorithm>
#include <cstdlib>
#include <linux/input-event-codes.h>
#include <map>
#include <string_view>
#include <utility>
#include <xkbcommon/xkbcommon.h>

namespace tavaro::input {

namespace {

/// Keymaps count the kernel's keys from 8 on, as X's protocol wants it.
std::uint32_t keycode(std::uint32_t key) { return key + 8; }

/// XKBLAYOUT="de,us"
std::map<std::string, std::string, std::less<>> shellValues(std::string_view text) {
    std::map<std::string, std::string, std::less<>> values;
    while (!text.empty()) {
        auto const line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        auto const sign = line.find('=');
        if (sign == std::string_view::npos || line.starts_with('#')) continue;
        auto value = line.substr(sign + 1);
        if (value.size() >= 2 && value.front() == '"' && value.back() == '"') value = value.substr(1, value.size() - 2);
        values.emplace(line.substr(0, sign), value);
    }
    return values;
}

std::map<std::string, std::string, std::less<>> settingsOf(std::string const& file) {
    try {
        return shellValues(readWholeFile(file, 1 << 16).value_or(""));
    } catch (Error const&) {
        return {};
    }
}

}

void LayoutKeyboard::Free::operator()(xkb_context* context) const { xkb_context_unref(context); }
void LayoutKeyboard::Free::operator()(xkb_keymap* keymap) const { xkb_keymap_unref(keymap); }
void LayoutKeyboard::Free::operator()(xkb_state* state) const { xkb_state_unref(state); }

LayoutKeyboard::LayoutKeyboard(std::string const& consoleSettings) : context_(xkb_context_new(XKB_CONTEXT_NO_FLAGS)) {
    if (!context_) return;
    xkb_context_set_log_level(context_.get(), XKB_LOG_LEVEL_CRITICAL);
    auto const settings = settingsOf(consoleSettings);
    auto const named = [&](char const* name) -> char const* {
        auto const found = settings.find(name);
        return found == settings.end() || found->second.empty() ? nullptr : found->second.c_str();
    };
    // A name that is missing here is that of the environment, or the usual one.
    bool const hasOwn = std::getenv("XKB_DEFAULT_LAYOUT") != nullptr;
    xkb_rule_names const names{.rules = nullptr,
                               .model = hasOwn ? nullptr : named("XKBMODEL"),
                               .layout = hasOwn ? nullptr : named("XKBLAYOUT"),
                               .variant = hasOwn ? nullptr : named("XKBVARIANT"),
                               .options = hasOwn ? nullptr : named("XKBOPTIONS")};
    std::unique_ptr<xkb_keymap, Free> keymap(
        xkb_keymap_new_from_names(context_.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (!keymap) keymap.reset(xkb_keymap_new_from_names(context_.get(), nullptr, XKB_KEYMAP_COMPILE_NO_FLAGS));
    use(std::move(keymap));
}

LayoutKeyboard::~LayoutKeyboard() = default;

void LayoutKeyboard::use(std::string const& keymap) {
    if (!context_) return;
    use(std::unique_ptr<xkb_keymap, Free>(xkb_keymap_new_from_string(
        context_.get(), keymap.c_str(), XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS)));
}

void LayoutKeyboard::use(std::unique_ptr<xkb_keymap, Free> keymap) {
    std::unique_ptr<xkb_state, Free> state(keymap ? xkb_state_new(keymap.get()) : nullptr);
    if (!state) return;
    if (state_)
        xkb_state_update_mask(state.get(), 0, 0, xkb_state_serialize_mods(state_.get(), XKB_STATE_MODS_LOCKED), 0, 0,
                              xkb_state_serialize_layout(state_.get(), XKB_STATE_LAYOUT_LOCKED));
    state_ = std::move(state);
    for (auto const key : held_) xkb_state_update_key(state_.get(), keycode(key), XKB_KEY_DOWN);
}

void LayoutKeyboard::lockNumbers() {
    if (!state_ || xkb_state_mod_name_is_active(state_.get(), XKB_MOD_NAME_NUM, XKB_STATE_MODS_LOCKED) > 0) return;
    xkb_state_update_key(state_.get(), keycode(KEY_NUMLOCK), XKB_KEY_DOWN);
    xkb_state_update_key(state_.get(), keycode(KEY_NUMLOCK), XKB_KEY_UP);
}

std::optional<Chord> LayoutKeyboard::press(std::uint32_t key) {
    if (!state_) return std::nullopt;
    auto chord = chordOf(*state_, keycode(key));
    held_.insert(key);
    xkb_state_update_key(state_.get(), keycode(key), XKB_KEY_DOWN);
    return chord;
}

void LayoutKeyboard::release(std::uint32_t key) {
    held_.erase(key);
    if (state_) xkb_state_update_key(state_.get(), keycode(key), XKB_KEY_UP);
}

}
