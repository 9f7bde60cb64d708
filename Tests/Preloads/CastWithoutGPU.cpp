// For xdg-desktop-portal-wlr 0.7, which shares no screen where the compositor offers it no picture in a GPU's memory,
// although it takes those in shared memory right after: preloaded into it, this has each picture offered both ways.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <dlfcn.h>

struct wl_proxy;
extern "C" char const* wl_proxy_get_class(wl_proxy* proxy);

namespace {

using Handler = void (*)();
// Events of zwlr_screencopy_frame_v1, by their number.
constexpr std::size_t inSharedMemory = 0, inGPUMemory = 5, events = 7;

std::array<Handler, events> asked{};

void onSharedMemory(void* data, void* frame, std::uint32_t format, std::uint32_t width, std::uint32_t height,
                    std::uint32_t stride) {
    using InMemory = void (*)(void*, void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t);
    using InGPU = void (*)(void*, void*, std::uint32_t, std::uint32_t, std::uint32_t);
    constexpr std::uint32_t xrgb8888 = 0x3432'5258;
    reinterpret_cast<InMemory>(asked[inSharedMemory])(data, frame, format, width, height, stride);
    reinterpret_cast<InGPU>(asked[inGPUMemory])(data, frame, xrgb8888, width, height);
}

}

extern "C" int wl_proxy_add_listener(wl_proxy* proxy, Handler* listener, void* data) {
    using AddListener = int (*)(wl_proxy*, Handler*, void*);
    static auto const next = reinterpret_cast<AddListener>(dlsym(RTLD_NEXT, "wl_proxy_add_listener"));
    static std::array<Handler, events> heard{};
    if (std::strcmp(wl_proxy_get_class(proxy), "zwlr_screencopy_frame_v1") != 0) return next(proxy, listener, data);
    std::copy_n(listener, events, asked.begin());
    heard = asked;
    heard[inSharedMemory] = reinterpret_cast<Handler>(&onSharedMemory);
    return next(proxy, heard.data(), data);
}
