#include <TavaroCapture/X11/Private/Keyboard.h>

#include <TavaroCapture/Events/Private/KeyChord.h>

#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

// The protocol's own header names a field after a keyword of this language.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit

namespace tavaro::x11 {

void Keyboard::FreeKeymap::operator()(xkb_context* context) const { xkb_context_unref(context); }
void Keyboard::FreeKeymap::operator()(xkb_keymap* keymap) const { xkb_keymap_unref(keymap); }
void Keyboard::FreeKeymap::operator()(xkb_state* state) const { xkb_state_unref(state); }

Keyboard::~Keyboard() = default;

std::unique_ptr<Keyboard> Keyboard::open(Connection& connection) {
    std::unique_ptr<Keyboard> keyboard(new Keyboard(connection));
    if (!xkb_x11_setup_xkb_extension(connection.get(), XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                                     XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, &keyboard->firstEvent_,
                                     nullptr))
        return nullptr;
    keyboard->context_.reset(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
    if (!keyboard->context_ || !keyboard->load()) return nullptr;
    keyboard->selectEvents();
    return keyboard;
}

bool Keyboard::load() {
    device_ = xkb_x11_get_core_keyboard_device_id(connection_.get());
    if (device_ < 0) return false;
    std::unique_ptr<xkb_keymap, FreeKeymap> keymap(
        xkb_x11_keymap_new_from_device(context_.get(), connection_.get(), device_, XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (!keymap) return false;
    std::unique_ptr<xkb_state, FreeKeymap> state(
        xkb_x11_state_new_from_device(keymap.get(), connection_.get(), device_));
    if (!state) return false;
    keymap_ = std::move(keymap);
    state_ = std::move(state);
    return true;
}

void Keyboard::selectEvents() {
    constexpr std::uint16_t events =
        XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY | XCB_XKB_EVENT_TYPE_STATE_NOTIFY;
    constexpr std::uint16_t mapParts = XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS |
                                       XCB_XKB_MAP_PART_MODIFIER_MAP | XCB_XKB_MAP_PART_EXPLICIT_COMPONENTS |
                                       XCB_XKB_MAP_PART_KEY_ACTIONS | XCB_XKB_MAP_PART_VIRTUAL_MODS |
                                       XCB_XKB_MAP_PART_VIRTUAL_MOD_MAP;
    constexpr std::uint16_t stateParts = XCB_XKB_STATE_PART_MODIFIER_BASE | XCB_XKB_STATE_PART_MODIFIER_LATCH |
                                         XCB_XKB_STATE_PART_MODIFIER_LOCK | XCB_XKB_STATE_PART_GROUP_BASE |
                                         XCB_XKB_STATE_PART_GROUP_LATCH | XCB_XKB_STATE_PART_GROUP_LOCK;
    xcb_xkb_select_events_details_t details = {};
    details.affectNewKeyboard = XCB_XKB_NKN_DETAIL_KEYCODES;
    details.newKeyboardDetails = XCB_XKB_NKN_DETAIL_KEYCODES;
    details.affectState = stateParts;
    details.stateDetails = stateParts;
    xcb_xkb_select_events_aux(connection_.get(), static_cast<std::uint16_t>(device_), events, 0, 0, mapParts, mapParts,
                              &details);
}

bool Keyboard::handle(xcb_generic_event_t const& event) {
    if ((event.response_type & 0x7f) != firstEvent_) return false;
    auto const kind = event.pad0; // every event of the extension tells its kind in the second byte
    if (kind == XCB_XKB_STATE_NOTIFY) {
        auto const& change = reinterpret_cast<xcb_xkb_state_notify_event_t const&>(event);
        xkb_state_update_mask(state_.get(), change.baseMods, change.latchedMods, change.lockedMods,
                              static_cast<xkb_layout_index_t>(change.baseGroup),
                              static_cast<xkb_layout_index_t>(change.latchedGroup), change.lockedGroup);
    } else if (kind == XCB_XKB_NEW_KEYBOARD_NOTIFY || kind == XCB_XKB_MAP_NOTIFY) {
        load();
    }
    return true;
}

std::optional<Chord> Keyboard::chord(std::uint32_t keycode) const { return chordOf(*state_, keycode); }

}
