#include <TavaroAutomation/Input/Private/KeyboardLayout.h>

#include <TavaroAutomation/Applications/Private/AutomatedDesktop.h>
#include <TavaroAutomation/Errors/AutomationError.h>

#include <array>
#include <xkbcommon/xkbcommon-x11.h>

// The generated header names a field `explicit`, a word of this language.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit

namespace tavaro::x11 {

namespace {

constexpr xkb_mod_mask_t shift = 1U << 0;
constexpr xkb_mod_mask_t lock = 1U << 1;
constexpr xkb_mod_mask_t level3 = 1U << 7; // Mod5, where every layout has AltGr
constexpr std::uint16_t coreKeyboard = XCB_XKB_ID_USE_CORE_KBD;

constexpr std::chrono::seconds longestHeld{5};
constexpr std::chrono::milliseconds betweenAsking{10};

struct FreeContext {
    void operator()(xkb_context* context) const { xkb_context_unref(context); }
};

[[noreturn]] void refuseKeyboard(Connection const& connection) {
    expectAlive(connection);
    throw AutomationError(AutomationError::Kind::failed,
                          "Keys cannot be typed: the X server tells nothing of its keyboard.");
}

void setCapsLock(Connection& connection, std::uint8_t mask) {
    xcb_xkb_latch_lock_state(connection.get(), coreKeyboard, lock, mask, false, 0, 0, false, 0);
    connection.synchronize();
}

}

struct KeyboardLayout::Level {
    xkb_layout_index_t layout;
    xkb_level_index_t level;
};

void KeyboardLayout::FreeKeymap::operator()(xkb_keymap* keymap) const { xkb_keymap_unref(keymap); }

KeyboardWatch::KeyboardWatch(Connection& connection) : connection_(connection) {
    if (!connection.extension(xcb_xkb_id)) refuseKeyboard(connection);
    // The server answers only clients that have said so.
    connection.ask<xcb_xkb_use_extension, xcb_xkb_use_extension_reply>(std::uint16_t{XCB_XKB_MAJOR_VERSION},
                                                                       std::uint16_t{XCB_XKB_MINOR_VERSION});
}

KeyboardState KeyboardWatch::now() {
    auto const state = connection_.ask<xcb_xkb_get_state, xcb_xkb_get_state_reply>(coreKeyboard);
    if (!state) refuseKeyboard(connection_);
    return {.held = state->baseMods, .isCapsLocked = (state->lockedMods & lock) != 0, .group = state->group};
}

KeyboardState KeyboardWatch::whenFree(std::stop_token const& stop) {
    auto const start = InputClock::now();
    while (true) {
        auto const state = now();
        if (state.held == 0) return state;
        if (InputClock::now() - start > longestHeld)
            throw AutomationError(AutomationError::Kind::failed,
                                  "Stopped: a modifier key, such as Shift or Control, is being held down.");
        rest(betweenAsking, stop);
    }
}

KeyboardChanges::KeyboardChanges(Connection& connection, std::set<std::uint8_t> const& without)
    : connection_(connection)
    , without_(without) {
    auto const* const extension = connection.extension(xcb_xkb_id);
    if (!extension) refuseKeyboard(connection);
    ownEvents_ = extension->first_event;
    constexpr std::uint16_t events = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    constexpr std::uint16_t parts = XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS;
    xcb_xkb_select_events(connection.get(), coreKeyboard, events, 0, events, parts, parts, nullptr);
}

int KeyboardChanges::countSoFar() {
    while (auto const event = connection_.poll()) count_ += isChange(*event) ? 1 : 0;
    return count_;
}

bool KeyboardChanges::isChange(xcb_generic_event_t const& event) const {
    if ((event.response_type & 0x7f) != ownEvents_) return false;
    auto const& change = reinterpret_cast<xcb_xkb_map_notify_event_t const&>(event);
    if (change.xkbType != XCB_XKB_MAP_NOTIFY) return change.xkbType == XCB_XKB_NEW_KEYBOARD_NOTIFY;
    for (int code = change.firstKeySym; code < change.firstKeySym + change.nKeySyms; ++code) {
        if (!without_.contains(static_cast<std::uint8_t>(code))) return true;
    }
    return false;
}

KeyboardLayout::KeyboardLayout(FakeInput& input, std::uint8_t group) : group_(group) {
    auto& connection = input.connection();
    std::unique_ptr<xkb_context, FreeContext> const context(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
    bool const hasKeyboard =
        context &&
        xkb_x11_setup_xkb_extension(connection.get(), XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                                    XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr, nullptr);
    // What the test extension presses is read by the layout of its own device, which may differ from the user's.
    std::int32_t const own = input.deviceID(FakeInput::Device::keyboard);
    if (hasKeyboard)
        keymap_.reset(xkb_x11_keymap_new_from_device(context.get(), connection.get(),
                                                     own ? own : xkb_x11_get_core_keyboard_device_id(connection.get()),
                                                     XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (!keymap_) refuseKeyboard(connection);
}

KeyboardLayout::~KeyboardLayout() = default;

std::optional<KeyStroke> KeyboardLayout::making(std::uint32_t symbol, std::set<std::uint8_t> const& without) const {
    auto const last = xkb_keymap_max_keycode(keymap_.get());
    for (auto code = xkb_keymap_min_keycode(keymap_.get()); code <= last && code < 256; ++code) {
        if (without.contains(static_cast<std::uint8_t>(code))) continue;
        if (auto found = keyMaking(symbol, code)) return found;
    }
    return std::nullopt;
}

std::optional<KeyStroke> KeyboardLayout::keyMaking(std::uint32_t symbol, std::uint32_t code) const {
    auto const layouts = xkb_keymap_num_layouts_for_key(keymap_.get(), code);
    if (layouts == 0) return std::nullopt;
    auto const layout = group_ % layouts;
    auto const levels = xkb_keymap_num_levels_for_key(keymap_.get(), code, layout);
    for (xkb_level_index_t level = 0; level < levels; ++level) {
        xkb_keysym_t const* symbols = nullptr;
        int const count = xkb_keymap_key_get_syms_by_level(keymap_.get(), code, layout, level, &symbols);
        if (count != 1 || symbols[0] != symbol) continue;
        if (auto found = stroke(code, {layout, level})) return found;
    }
    return std::nullopt;
}

std::optional<std::uint8_t> KeyboardLayout::makingElsewhere(std::uint32_t symbol,
                                                            std::set<std::uint8_t> const& without) const {
    for (xkb_layout_index_t layout = 0; layout < xkb_keymap_num_layouts(keymap_.get()); ++layout) {
        for (auto code = xkb_keymap_min_keycode(keymap_.get()); code < 256; ++code) {
            if (without.contains(static_cast<std::uint8_t>(code))) continue;
            xkb_keysym_t const* symbols = nullptr;
            int const count = xkb_keymap_key_get_syms_by_level(keymap_.get(), code, layout, 0, &symbols);
            if (count == 1 && symbols[0] == symbol) return static_cast<std::uint8_t>(code);
        }
    }
    return std::nullopt;
}

/// Nothing where the level needs more than a held Shift or AltGr.
std::optional<KeyStroke> KeyboardLayout::stroke(std::uint32_t code, Level const& level) const {
    std::array<xkb_mod_mask_t, 8> masks{};
    auto const count =
        xkb_keymap_key_get_mods_for_level(keymap_.get(), code, level.layout, level.level, masks.data(), masks.size());
    for (std::size_t i = 0; i < count; ++i) {
        if ((masks[i] & ~(shift | level3)) != 0) continue;
        KeyStroke result{static_cast<std::uint8_t>(code), {}};
        if (masks[i] & level3) {
            auto const key = making(XKB_KEY_ISO_Level3_Shift, {});
            if (!key) continue;
            result.modifiers.push_back(key->code);
        }
        if (masks[i] & shift) {
            auto const key = at("LFSH");
            if (!key) continue;
            result.modifiers.push_back(*key);
        }
        return result;
    }
    return std::nullopt;
}

std::optional<std::uint8_t> KeyboardLayout::at(char const* place) const {
    auto const code = xkb_keymap_key_by_name(keymap_.get(), place);
    if (code == XKB_KEYCODE_INVALID || code > 255) return std::nullopt;
    return static_cast<std::uint8_t>(code);
}

void CapsLockOff::ensure(KeyboardState const& state) {
    if (!state.isCapsLocked) return;
    wasOn_ = true;
    setCapsLock(connection_, 0);
}

CapsLockOff::~CapsLockOff() {
    if (wasOn_) setCapsLock(connection_, lock);
}

}
