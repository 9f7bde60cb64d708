#pragma once

#include <cstdint>
#include <wayland-client.h>

/// The part of the wlroots protocol “layer shell” (zwlr_layer_shell_v1) that is used here: surfaces that are no
/// windows, in one of the layers that a screen is made of. Many compositors have it, GNOME's has not.
namespace tavaro::wayland::layerShell {

struct Shell; // a wl_proxy, as the next
struct Surface;

extern wl_interface const shellInterface;

Shell* bind(wl_registry* registry, std::uint32_t name);
void destroy(Shell* shell);

struct Configuration {
    void (*configure)(void* data, Surface* surface, std::uint32_t serial, std::uint32_t width, std::uint32_t height);
    void (*closed)(void* data, Surface* surface);
};
/// Above all windows of that screen.
Surface* overlay(Shell* shell, wl_surface* surface, wl_output* output, char const* name);
void listen(Surface* surface, Configuration const& listener, void* data);
void setSize(Surface* surface, std::uint32_t width, std::uint32_t height);
void anchorTopLeft(Surface* surface);
/// Its place is that of nothing else, and it gives way to nothing.
void ignoreOthers(Surface* surface);
void acknowledge(Surface* surface, std::uint32_t serial);
void destroy(Surface* surface);

}
