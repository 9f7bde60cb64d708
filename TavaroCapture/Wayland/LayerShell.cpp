#include <TavaroCapture/Wayland/Private/LayerShell.h>

#include <array>

namespace tavaro::wayland::layerShell {

namespace {

// The order is the protocol's: a request's number is its place.
enum class ShellRequest : std::uint32_t { getLayerSurface };
enum class SurfaceRequest : std::uint32_t {
    setSize,
    setAnchor,
    setExclusiveZone,
    setMargin,
    setKeyboardInteractivity,
    getPopup,
    acknowledge,
    destroy
};

// libwayland takes these without const, and changes none.
std::array<wl_interface const*, 4> numbers{};
std::array<wl_message, 8> const surfaceRequests{{{"set_size", "uu", numbers.data()},
                                                 {"set_anchor", "u", numbers.data()},
                                                 {"set_exclusive_zone", "i", numbers.data()},
                                                 {"set_margin", "iiii", numbers.data()},
                                                 {"set_keyboard_interactivity", "u", numbers.data()},
                                                 {"get_popup", "o", numbers.data()},
                                                 {"ack_configure", "u", numbers.data()},
                                                 {"destroy", "", numbers.data()}}};
std::array<wl_message, 2> const surfaceEvents{{{"configure", "uuu", numbers.data()}, {"closed", "", numbers.data()}}};
wl_interface const surfaceInterface{"zwlr_layer_surface_v1", 1, 8, surfaceRequests.data(), 2, surfaceEvents.data()};

std::array<wl_interface const*, 5> overlayTypes{&surfaceInterface, &wl_surface_interface, &wl_output_interface};
std::array<wl_message, 1> const shellRequests{{{"get_layer_surface", "no?ous", overlayTypes.data()}}};

wl_proxy* proxyOf(auto* object) { return reinterpret_cast<wl_proxy*>(object); }

template<class... Values> void send(Surface* surface, SurfaceRequest request, Values... values) {
    bool const isLast = request == SurfaceRequest::destroy;
    wl_proxy_marshal_flags(proxyOf(surface), static_cast<std::uint32_t>(request), nullptr, 1,
                           isLast ? WL_MARSHAL_FLAG_DESTROY : 0, values...);
}

}

wl_interface const shellInterface{"zwlr_layer_shell_v1", 1, 1, shellRequests.data(), 0, nullptr};

Shell* bind(wl_registry* registry, std::uint32_t name) {
    return static_cast<Shell*>(wl_registry_bind(registry, name, &shellInterface, 1));
}

void destroy(Shell* shell) { wl_proxy_destroy(proxyOf(shell)); }

Surface* overlay(Shell* shell, wl_surface* surface, wl_output* output, char const* name) {
    constexpr std::uint32_t above = 3;
    auto* const made = wl_proxy_marshal_flags(proxyOf(shell), static_cast<std::uint32_t>(ShellRequest::getLayerSurface),
                                              &surfaceInterface, 1, 0, nullptr, surface, output, above, name);
    return reinterpret_cast<Surface*>(made);
}

void listen(Surface* surface, Configuration const& listener, void* data) {
    using Handler = void (*)();
    auto* const handlers = reinterpret_cast<Handler*>(const_cast<Configuration*>(&listener));
    wl_proxy_add_listener(proxyOf(surface), handlers, data);
}

void setSize(Surface* surface, std::uint32_t width, std::uint32_t height) {
    send(surface, SurfaceRequest::setSize, width, height);
}

void anchorTopLeft(Surface* surface) {
    constexpr std::uint32_t top = 1, left = 4;
    send(surface, SurfaceRequest::setAnchor, top | left);
}

void ignoreOthers(Surface* surface) { send(surface, SurfaceRequest::setExclusiveZone, std::int32_t{-1}); }
void acknowledge(Surface* surface, std::uint32_t serial) { send(surface, SurfaceRequest::acknowledge, serial); }
void destroy(Surface* surface) { send(surface, SurfaceRequest::destroy); }

}
