#include "TestKeyboard.h"

#include <TavaroCapture/Compositor/Private/Connection.h>
#include <TavaroCore/Files/FileDescriptor.h>

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <xkbcommon/xkbcommon.h>

namespace tavaro {

namespace {

// What is used of the protocol zwp_virtual_keyboard_v1; a request's number is its place.
std::array<wl_interface const*, 4> numbers{};
std::array<wl_message, 4> const keyboardRequests{{{"keymap", "uhu", numbers.data()},
                                                  {"key", "uuu", numbers.data()},
                                                  {"modifiers", "uuuu", numbers.data()},
                                                  {"destroy", "", numbers.data()}}};
wl_interface const keyboardInterface{"zwp_virtual_keyboard_v1", 1, 4, keyboardRequests.data(), 0, nullptr};
std::array<wl_interface const*, 2> creation{&wl_seat_interface, &keyboardInterface};
std::array<wl_message, 1> const factoryRequests{{{"create_virtual_keyboard", "on", creation.data()}}};
wl_interface const factoryInterface{"zwp_virtual_keyboard_manager_v1", 1, 1, factoryRequests.data(), 0, nullptr};

std::string usualKeymap() {
    auto* const context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    auto* const keymap = xkb_keymap_new_from_names(context, nullptr, XKB_KEYMAP_COMPILE_NO_FLAGS);
    char* const text = xkb_keymap_get_as_string(keymap, XKB_KEYMAP_FORMAT_TEXT_V1);
    std::string result = text;
    free(text);
    xkb_keymap_unref(keymap);
    xkb_context_unref(context);
    return result;
}

}

struct TestKeyboard::State {
    compositor::Connection desktop;
    wl_seat* seat = nullptr;
    wl_proxy* factory = nullptr;
    wl_proxy* keyboard = nullptr;
    std::uint32_t moment = 0; // milliseconds of no clock in particular

    static void onGlobal(void* here, wl_registry* registry, std::uint32_t name, char const* interface, std::uint32_t) {
        auto& state = *static_cast<State*>(here);
        std::string_view const kind = interface;
        if (kind == wl_seat_interface.name)
            state.seat = static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
        if (kind == factoryInterface.name)
            state.factory = static_cast<wl_proxy*>(wl_registry_bind(registry, name, &factoryInterface, 1));
    }
    void send(std::uint32_t request, auto... values) {
        wl_proxy_marshal_flags(keyboard, request, nullptr, 1, 0, values...);
    }
};

TestKeyboard::TestKeyboard() : state_(std::make_unique<State>()) {
    static constexpr wl_registry_listener listener{State::onGlobal, [](void*, wl_registry*, std::uint32_t) {}};
    auto& state = *state_;
    if (!state.desktop.isOpen()) throw std::runtime_error("no Wayland desktop");
    wl_registry_add_listener(wl_display_get_registry(state.desktop.get()), &listener, &state);
    wl_display_roundtrip(state.desktop.get());
    if (!state.factory || !state.seat) throw std::runtime_error("the Wayland desktop takes no keyboard");
    state.keyboard = wl_proxy_marshal_flags(state.factory, 0, &keyboardInterface, 1, 0, state.seat, nullptr);
    auto const keymap = usualKeymap();
    auto const size = keymap.size() + 1; // with the zero byte
    FileDescriptor const file(memfd_create("keymap", MFD_CLOEXEC));
    if (write(file.get(), keymap.c_str(), size) != static_cast<ssize_t>(size)) throw std::runtime_error("no keymap");
    state.send(0, std::uint32_t{WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1}, file.get(), static_cast<std::uint32_t>(size));
    wl_display_roundtrip(state.desktop.get());
}

TestKeyboard::~TestKeyboard() = default;

void TestKeyboard::tap(std::uint32_t key) {
    for (std::uint32_t const isDown : {1, 0}) state_->send(1, ++state_->moment, key, isDown);
    wl_display_roundtrip(state_->desktop.get());
}

}
