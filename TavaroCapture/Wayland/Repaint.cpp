#include <TavaroCapture/Wayland/Private/Repaint.h>

#include <TavaroCapture/Compositor/Private/Connection.h>
#include <TavaroCapture/Wayland/Private/LayerShell.h>
#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroCore/Files/ReleaseWith.h>

#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace tavaro::wayland {

namespace {

using Registry = std::unique_ptr<wl_registry, ReleaseWith<wl_registry_destroy>>;
using Compositor = std::unique_ptr<wl_compositor, ReleaseWith<wl_compositor_destroy>>;
using SharedMemory = std::unique_ptr<wl_shm, ReleaseWith<wl_shm_destroy>>;
using Output = std::unique_ptr<wl_output, ReleaseWith<wl_output_destroy>>;
using Buffer = std::unique_ptr<wl_buffer, ReleaseWith<wl_buffer_destroy>>;
using Surface = std::unique_ptr<wl_surface, ReleaseWith<wl_surface_destroy>>;
struct DestroyLayer {
    void operator()(auto* handle) const { layerShell::destroy(handle); }
};
using Shell = std::unique_ptr<layerShell::Shell, DestroyLayer>;
using Layer = std::unique_ptr<layerShell::Surface, DestroyLayer>;

/// One pixel that lets through what is below it.
Buffer clearPixel(wl_shm* memory) {
    constexpr int bytes = 4;
    FileDescriptor const file(::memfd_create("tavaro-pixel", MFD_CLOEXEC));
    if (!file.isOpen() || ::ftruncate(file.get(), bytes) != 0) return nullptr;
    auto* const pool = wl_shm_create_pool(memory, file.get(), bytes);
    Buffer result(wl_shm_pool_create_buffer(pool, 0, 1, 1, bytes, WL_SHM_FORMAT_ARGB8888));
    wl_shm_pool_destroy(pool);
    return result;
}

/// The pixel on one screen.
struct Pixel {
    Surface surface;
    Layer layer; // goes first
    bool isPlaced = false;
};

}

struct Repaint::State {
    compositor::Connection desktop;
    Registry registry;
    Compositor compositor;
    SharedMemory memory;
    Shell shell;
    std::vector<Output> outputs;
    Buffer pixel;
    std::vector<std::unique_ptr<Pixel>> pixels; // listened to by address

    State() {
        static constexpr wl_registry_listener listener{.global = onGlobal, .global_remove = onGone};
        if (!desktop.isOpen()) return;
        registry.reset(wl_display_get_registry(desktop.get()));
        wl_registry_add_listener(registry.get(), &listener, this);
    }

    static void onGone(void* /*self*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {}
    static void onGlobal(void* self, wl_registry* registry, std::uint32_t name, char const* interface,
                         std::uint32_t /*version*/) {
        auto& here = *static_cast<State*>(self);
        std::string_view const kind = interface;
        auto const bound = [&](wl_interface const& what) { return wl_registry_bind(registry, name, &what, 1); };
        if (kind == wl_compositor_interface.name)
            here.compositor.reset(static_cast<wl_compositor*>(bound(wl_compositor_interface)));
        if (kind == wl_shm_interface.name) here.memory.reset(static_cast<wl_shm*>(bound(wl_shm_interface)));
        if (kind == wl_output_interface.name)
            here.outputs.emplace_back(static_cast<wl_output*>(bound(wl_output_interface)));
        if (kind == layerShell::shellInterface.name) here.shell.reset(layerShell::bind(registry, name));
    }

    static void onConfigure(void* data, layerShell::Surface* layer, std::uint32_t serial, std::uint32_t /*width*/,
                            std::uint32_t /*height*/) {
        layerShell::acknowledge(layer, serial);
        static_cast<Pixel*>(data)->isPlaced = true;
    }
    static void onClosed(void* data, layerShell::Surface* /*layer*/) { static_cast<Pixel*>(data)->isPlaced = false; }

    void place(wl_output* output);
    void draw(Pixel const& on) const;
};

void Repaint::State::place(wl_output* output) {
    static constexpr layerShell::Configuration listener{.configure = onConfigure, .closed = onClosed};
    auto& on = *pixels.emplace_back(std::make_unique<Pixel>());
    on.surface.reset(wl_compositor_create_surface(compositor.get()));
    on.layer.reset(layerShell::overlay(shell.get(), on.surface.get(), output, "tavaro"));
    layerShell::listen(on.layer.get(), listener, &on);
    layerShell::setSize(on.layer.get(), 1, 1);
    layerShell::anchorTopLeft(on.layer.get());
    layerShell::ignoreOthers(on.layer.get());
    auto* const nowhere = wl_compositor_create_region(compositor.get()); // clicks go to what is below
    wl_surface_set_input_region(on.surface.get(), nowhere);
    wl_region_destroy(nowhere);
    wl_surface_commit(on.surface.get());
}

void Repaint::State::draw(Pixel const& on) const {
    wl_surface_attach(on.surface.get(), pixel.get(), 0, 0);
    wl_surface_damage(on.surface.get(), 0, 0, 1, 1);
    wl_surface_commit(on.surface.get());
}

Repaint::Repaint() : state_(std::make_unique<State>()) {}

Repaint::~Repaint() {
    state_->pixels.clear();
    if (state_->desktop.isOpen()) wl_display_flush(state_->desktop.get());
}

void Repaint::again() {
    auto& state = *state_;
    if (!state.desktop.isOpen() || !state.desktop.letIn()) return;
    if (!state.shell || !state.compositor || !state.memory) return;
    if (!state.pixel) state.pixel = clearPixel(state.memory.get());
    if (!state.pixel) return;
    if (state.pixels.empty())
        for (auto const& output : state.outputs) state.place(output.get());
    for (auto const& pixel : state.pixels)
        if (pixel->isPlaced) state.draw(*pixel);
    wl_display_flush(state.desktop.get());
}

}
