#include "TestMouse.h"

#include <array>
#include <stdexcept>
#include <string_view>
#include <wayland-client.h>

namespace tavaro {

namespace {

// What is used of the protocol zwlr_virtual_pointer_v1; a request's number is its place.
std::array<wl_interface const*, 5> numbers{};
std::array<wl_message, 5> const pointerRequests{{{"motion", "uff", numbers.data()},
                                                 {"motion_absolute", "uuuuu", numbers.data()},
                                                 {"button", "uuu", numbers.data()},
                                                 {"axis", "uuf", numbers.data()},
                                                 {"frame", "", numbers.data()}}};
wl_interface const pointerInterface{"zwlr_virtual_pointer_v1", 1, 5, pointerRequests.data(), 0, nullptr};
std::array<wl_interface const*, 2> creation{&wl_seat_interface, &pointerInterface};
std::array<wl_message, 1> const factoryRequests{{{"create_virtual_pointer", "?on", creation.data()}}};
wl_interface const factoryInterface{"zwlr_virtual_pointer_manager_v1", 1, 1, factoryRequests.data(), 0, nullptr};

void onGlobal(void* factory, wl_registry* registry, std::uint32_t name, char const* interface, std::uint32_t) {
    if (interface == std::string_view(factoryInterface.name))
        *static_cast<wl_proxy**>(factory) =
            static_cast<wl_proxy*>(wl_registry_bind(registry, name, &factoryInterface, 1));
}
void onGone(void*, wl_registry*, std::uint32_t) {}

}

struct TestMouse::State {
    wl_display* display = wl_display_connect(nullptr);
    wl_proxy* pointer = nullptr;
    std::uint32_t moment = 0; // milliseconds of no clock in particular
};

TestMouse::TestMouse() : state_(std::make_unique<State>()) {
    static constexpr wl_registry_listener listener{.global = onGlobal, .global_remove = onGone};
    if (!state_->display) throw std::runtime_error("no Wayland desktop");
    wl_proxy* factory = nullptr;
    wl_registry_add_listener(wl_display_get_registry(state_->display), &listener, &factory);
    wl_display_roundtrip(state_->display);
    if (!factory) throw std::runtime_error("the Wayland desktop takes no mouse");
    state_->pointer = wl_proxy_marshal_flags(factory, 0, &pointerInterface, 1, 0, nullptr, nullptr);
}

TestMouse::~TestMouse() { wl_display_disconnect(state_->display); }

void TestMouse::moveTo(unsigned x, unsigned y, unsigned width, unsigned height) {
    wl_proxy_marshal_flags(state_->pointer, 1, nullptr, 1, 0, ++state_->moment, x, y, width, height);
    wl_proxy_marshal_flags(state_->pointer, 4, nullptr, 1, 0);
    wl_display_roundtrip(state_->display);
}

}
