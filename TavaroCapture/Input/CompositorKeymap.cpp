#include <TavaroCapture/Input/Private/CompositorKeymap.h>

#include <TavaroCapture/Compositor/Private/Connection.h>
#include <TavaroCore/Files/FileDescriptor.h>

#include <chrono>
#include <cstring>
#include <string_view>
#include <sys/mman.h>
#include <utility>

namespace tavaro::input {

namespace {

constexpr std::chrono::seconds patience{1};
constexpr std::uint32_t largestKeymap = 4 << 20; // bytes; usual ones have 60,000

/// A keymap ends with a zero byte.
std::string keymapText(int file, std::uint32_t size) {
    if (size == 0 || size > largestKeymap) return {};
    void* const pages = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
    if (pages == MAP_FAILED) return {};
    auto const* const text = static_cast<char const*>(pages);
    std::string result(text, ::strnlen(text, size));
    ::munmap(pages, size);
    return result;
}

}

struct CompositorKeymap::State {
    compositor::Connection desktop;
    wl_registry* registry = nullptr;
    wl_seat* seat = nullptr;
    wl_keyboard* keyboard = nullptr;
    std::optional<std::string> keymap;

    State() = default;
    ~State() {
        if (keyboard) wl_keyboard_destroy(keyboard);
        if (seat) wl_seat_destroy(seat);
        if (registry) wl_registry_destroy(registry);
    }
    State(State const&) = delete;
    State& operator=(State const&) = delete;

    bool ask();

    static void onGlobal(void* here, wl_registry* registry, std::uint32_t name, char const* interface,
                         std::uint32_t version);
    static void onCapabilities(void* here, wl_seat* seat, std::uint32_t capabilities);
    static void onKeymap(void* here, wl_keyboard* keyboard, std::uint32_t format, std::int32_t file,
                         std::uint32_t size);
};

void CompositorKeymap::State::onGlobal(void* here, wl_registry* registry, std::uint32_t name, char const* interface,
                                       std::uint32_t /*version*/) {
    auto& state = *static_cast<State*>(here);
    if (state.seat || std::string_view(interface) != wl_seat_interface.name) return;
    static constexpr wl_seat_listener listener{onCapabilities, [](void*, wl_seat*, char const*) {}};
    state.seat = static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
    wl_seat_add_listener(state.seat, &listener, here);
}

void CompositorKeymap::State::onCapabilities(void* here, wl_seat* seat, std::uint32_t capabilities) {
    auto& state = *static_cast<State*>(here);
    if (state.keyboard || (capabilities & WL_SEAT_CAPABILITY_KEYBOARD) == 0) return;
    using Surface = wl_surface;
    static constexpr wl_keyboard_listener listener{
        onKeymap,
        [](void*, wl_keyboard*, std::uint32_t, Surface*, wl_array*) {},
        [](void*, wl_keyboard*, std::uint32_t, Surface*) {},
        [](void*, wl_keyboard*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {},
        [](void*, wl_keyboard*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {},
        [](void*, wl_keyboard*, std::int32_t, std::int32_t) {},
    };
    state.keyboard = wl_seat_get_keyboard(seat);
    wl_keyboard_add_listener(state.keyboard, &listener, here);
}

void CompositorKeymap::State::onKeymap(void* here, wl_keyboard* /*keyboard*/, std::uint32_t format, std::int32_t file,
                                       std::uint32_t size) {
    FileDescriptor const owned(file);
    if (format != WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1) return;
    auto text = keymapText(file, size);
    if (!text.empty()) static_cast<State*>(here)->keymap = std::move(text);
}

/// For the seats, then for their keyboards, then for their keymaps: each comes as an answer to the one before.
bool CompositorKeymap::State::ask() {
    static constexpr wl_registry_listener listener{onGlobal, [](void*, wl_registry*, std::uint32_t) {}};
    auto const until = compositor::Connection::Clock::now() + patience;
    registry = wl_display_get_registry(desktop.get());
    wl_registry_add_listener(registry, &listener, this);
    for (int answer = 0; answer < 3; ++answer)
        if (!desktop.settle(until)) return false;
    return keymap.has_value();
}

std::unique_ptr<CompositorKeymap> CompositorKeymap::open() {
    auto state = std::make_unique<State>();
    if (!state->desktop.isOpen() || !state->ask()) return nullptr;
    return std::unique_ptr<CompositorKeymap>(new CompositorKeymap(std::move(state)));
}

CompositorKeymap::CompositorKeymap(std::unique_ptr<State> state) : state_(std::move(state)) {}
CompositorKeymap::~CompositorKeymap() = default;

int CompositorKeymap::descriptor() const { return state_->desktop.descriptor(); }
bool CompositorKeymap::listen() { return state_->desktop.letIn(); }
std::optional<std::string> CompositorKeymap::take() { return std::exchange(state_->keymap, std::nullopt); }

}
