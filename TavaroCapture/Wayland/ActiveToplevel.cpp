#include <TavaroCapture/Wayland/Private/ActiveToplevel.h>

#include <TavaroCapture/Compositor/Private/Connection.h>
#include <TavaroCapture/Events/Private/SecurePrompts.h>
#include <TavaroCapture/Sources/InstalledEntries.h>

#include <algorithm>
#include <array>
#include <poll.h>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro::wayland {

namespace {

using compositor::Connection;

constexpr auto longestAnswer = std::chrono::seconds(1);

// What is used of the protocol; the order is its own: a request's number is its place.
enum class HandleRequest : std::uint32_t {
    setMaximized,
    unsetMaximized,
    setMinimized,
    unsetMinimized,
    activate,
    close,
    setRectangle,
    destroy
};
constexpr std::uint32_t activated = 2; // a state

// libwayland takes these without const, and changes none.
std::array<wl_interface const*, 5> numbers{};
std::array<wl_interface const*, 1> seats{&wl_seat_interface};
std::array<wl_interface const*, 1> outputs{&wl_output_interface};
std::array<wl_interface const*, 5> rectangles{&wl_surface_interface};
std::array<wl_message, 8> const handleRequests{{{"set_maximized", "", numbers.data()},
                                                {"unset_maximized", "", numbers.data()},
                                                {"set_minimized", "", numbers.data()},
                                                {"unset_minimized", "", numbers.data()},
                                                {"activate", "o", seats.data()},
                                                {"close", "", numbers.data()},
                                                {"set_rectangle", "oiiii", rectangles.data()},
                                                {"destroy", "", numbers.data()}}};
std::array<wl_message, 7> const handleEvents{{{"title", "s", numbers.data()},
                                              {"app_id", "s", numbers.data()},
                                              {"output_enter", "o", outputs.data()},
                                              {"output_leave", "o", outputs.data()},
                                              {"state", "a", numbers.data()},
                                              {"done", "", numbers.data()},
                                              {"closed", "", numbers.data()}}};
wl_interface const handleInterface{"zwlr_foreign_toplevel_handle_v1",
                                   1,
                                   handleRequests.size(),
                                   handleRequests.data(),
                                   handleEvents.size(),
                                   handleEvents.data()};

std::array<wl_interface const*, 1> handles{&handleInterface};
std::array<wl_message, 1> const managerRequests{{{"stop", "", numbers.data()}}};
std::array<wl_message, 2> const managerEvents{{{"toplevel", "n", handles.data()}, {"finished", "", numbers.data()}}};
wl_interface const managerInterface{"zwlr_foreign_toplevel_manager_v1",
                                    1,
                                    managerRequests.size(),
                                    managerRequests.data(),
                                    managerEvents.size(),
                                    managerEvents.data()};

struct ManagerEvents {
    void (*toplevel)(void* data, wl_proxy* manager, wl_proxy* handle);
    void (*finished)(void* data, wl_proxy* manager);
};
struct HandleEvents {
    void (*title)(void* data, wl_proxy* handle, char const* title);
    void (*application)(void* data, wl_proxy* handle, char const* application);
    void (*outputEnter)(void* data, wl_proxy* handle, wl_output* output);
    void (*outputLeave)(void* data, wl_proxy* handle, wl_output* output);
    void (*state)(void* data, wl_proxy* handle, wl_array* states);
    void (*done)(void* data, wl_proxy* handle);
    void (*closed)(void* data, wl_proxy* handle);
};

void listenTo(wl_proxy* proxy, auto const& events, void* data) {
    using Handler = void (*)();
    wl_proxy_add_listener(proxy, reinterpret_cast<Handler*>(const_cast<void*>(static_cast<void const*>(&events))),
                          data);
}

using Proxy = std::unique_ptr<wl_proxy, ReleaseWith<wl_proxy_destroy>>;
struct ReleaseToplevel {
    void operator()(wl_proxy* handle) const {
        wl_proxy_marshal_flags(handle, static_cast<std::uint32_t>(HandleRequest::destroy), nullptr, 1,
                               WL_MARSHAL_FLAG_DESTROY);
    }
};
using Handle = std::unique_ptr<wl_proxy, ReleaseToplevel>;

struct Description {
    std::string title;
    std::string application;
    bool isActive = false;
};

FrontWindow described(Description const& window) {
    auto const& name = window.application;
    auto identity =
        identifyApplication({.instance = name, .windowClass = name, .gtkApplicationID = name}, window.title);
    FrontWindow result;
    result.asksForSecret = isSecurePrompt({.instance = name, .windowClass = name});
    if (!identity.name.empty()) result.application = std::move(identity);
    return result;
}

}

struct ActiveToplevel::State {
    struct Toplevel {
        State* state;
        Handle handle;
        Description told = {}; // takes effect when it is whole
        Description shown = {};
    };

    Connection desktop;
    std::unique_ptr<wl_registry, ReleaseWith<wl_registry_destroy>> registry;
    Proxy manager;
    std::vector<std::unique_ptr<Toplevel>> toplevels; // listened to by address
    Toplevel const* front = nullptr;
    FrontWindow window; // what that is

    bool ask();
    void note(Toplevel& toplevel);
    void leave(Toplevel const& toplevel);

    static void onGlobal(void* here, wl_registry* registry, std::uint32_t name, char const* interface,
                         std::uint32_t version);
    static void onToplevel(void* here, wl_proxy* manager, wl_proxy* handle);
    static void onStates(void* toplevel, wl_proxy* handle, wl_array* states);
    static void onDone(void* toplevel, wl_proxy* handle);
    static void onClosed(void* toplevel, wl_proxy* handle);
};

void ActiveToplevel::State::onGlobal(void* here, wl_registry* registry, std::uint32_t name, char const* interface,
                                     std::uint32_t /*version*/) {
    static constexpr ManagerEvents events{.toplevel = onToplevel, .finished = [](void*, wl_proxy*) {}};
    auto& state = *static_cast<State*>(here);
    if (state.manager || std::string_view(interface) != managerInterface.name) return;
    state.manager.reset(static_cast<wl_proxy*>(wl_registry_bind(registry, name, &managerInterface, 1)));
    listenTo(state.manager.get(), events, here);
}

void ActiveToplevel::State::onToplevel(void* here, wl_proxy* /*manager*/, wl_proxy* handle) {
    static constexpr HandleEvents events{
        .title = [](void* of, wl_proxy*, char const* title) { static_cast<Toplevel*>(of)->told.title = title; },
        .application = [](void* of, wl_proxy*,
                          char const* name) { static_cast<Toplevel*>(of)->told.application = name; },
        .outputEnter = [](void*, wl_proxy*, wl_output*) {},
        .outputLeave = [](void*, wl_proxy*, wl_output*) {},
        .state = onStates,
        .done = onDone,
        .closed = onClosed,
    };
    auto& state = *static_cast<State*>(here);
    auto& toplevel = *state.toplevels.emplace_back(std::make_unique<Toplevel>(Toplevel{&state, Handle(handle)}));
    listenTo(handle, events, &toplevel);
}

void ActiveToplevel::State::onStates(void* toplevel, wl_proxy* /*handle*/, wl_array* states) {
    std::span const all(static_cast<std::uint32_t const*>(states->data), states->size / sizeof(std::uint32_t));
    static_cast<Toplevel*>(toplevel)->told.isActive = std::ranges::find(all, activated) != all.end();
}

void ActiveToplevel::State::onDone(void* toplevel, wl_proxy* /*handle*/) {
    auto& whole = *static_cast<Toplevel*>(toplevel);
    whole.state->note(whole);
}

void ActiveToplevel::State::onClosed(void* toplevel, wl_proxy* /*handle*/) {
    auto& state = *static_cast<Toplevel*>(toplevel)->state;
    state.leave(*static_cast<Toplevel*>(toplevel));
    std::erase_if(state.toplevels, [toplevel](auto const& each) { return each.get() == toplevel; });
}

/// One that becomes active comes to the front, also before the other says that it is not any more.
void ActiveToplevel::State::note(Toplevel& toplevel) {
    bool const wasActive = toplevel.shown.isActive;
    toplevel.shown = toplevel.told;
    if (!toplevel.shown.isActive) return leave(toplevel);
    if (!wasActive) front = &toplevel;
    if (front == &toplevel) window = described(toplevel.shown);
}

void ActiveToplevel::State::leave(Toplevel const& toplevel) {
    if (front != &toplevel) return;
    front = nullptr;
    window = {};
}

/// For the manager, then for the windows that there are.
bool ActiveToplevel::State::ask() {
    static constexpr wl_registry_listener listener{onGlobal, [](void*, wl_registry*, std::uint32_t) {}};
    auto const until = Connection::Clock::now() + longestAnswer;
    registry.reset(wl_display_get_registry(desktop.get()));
    wl_registry_add_listener(registry.get(), &listener, this);
    return desktop.settle(until) && manager && desktop.settle(until);
}

std::unique_ptr<ActiveToplevel> ActiveToplevel::open() {
    auto state = std::make_unique<State>();
    if (!state->desktop.isOpen() || !state->ask()) return nullptr;
    return std::unique_ptr<ActiveToplevel>(new ActiveToplevel(std::move(state)));
}

ActiveToplevel::ActiveToplevel(std::unique_ptr<State> state) : state_(std::move(state)) {}
ActiveToplevel::~ActiveToplevel() = default;

int ActiveToplevel::descriptor() const { return state_->desktop.descriptor(); }
short ActiveToplevel::awaited() const { return POLLIN; }
bool ActiveToplevel::listen() { return state_->desktop.letIn(); }
FrontWindow ActiveToplevel::window() const { return state_->window; }

}
