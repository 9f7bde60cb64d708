#include "TestCompositor.h"

#include "../TemporaryFolder.h"
#include "../TestSession.h"

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroPlatform/Queues/SerialQueue.h>
#include <TavaroPlatform/Sockets/Bell.h>

#include <atomic>
#include <optional>
#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>
#include <wayland-server.h>
#include <xkbcommon/xkbcommon.h>

namespace tavaro {

namespace {

std::string keymapOfLayout(std::string const& layout) {
    auto* const context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    xkb_rule_names const names{.layout = layout.c_str()};
    auto* const keymap = xkb_keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
    char* const text = xkb_keymap_get_as_string(keymap, XKB_KEYMAP_FORMAT_TEXT_V1);
    std::string result = text;
    free(text);
    xkb_keymap_unref(keymap);
    xkb_context_unref(context);
    return result;
}

}

struct TestCompositor::State {
    TemporaryFolder const folder;
    ScopedVariable const runtime{"XDG_RUNTIME_DIR", folder.path()};
    wl_display* const display = wl_display_create();
    ScopedVariable const name{"WAYLAND_DISPLAY", wl_display_add_socket_auto(display)};
    std::string keymap; // the queue's while it runs, as the next
    std::vector<wl_resource*> keyboards;
    std::optional<std::string> next; // before the order
    std::atomic<bool> isOrdered = false;
    std::atomic<bool> isEnding = false;
    Bell orders;
    SerialQueue queue{"test.compositor"};

    explicit State(std::string text) : keymap(std::move(text)) {
        wl_global_create(display, &wl_seat_interface, 1, this, bindSeat);
        queue.async([this] { run(); });
    }
    ~State() { end(); }

    void end() {
        if (isEnding.exchange(true)) return;
        orders.ring();
        queue.sync([] {});
        wl_display_destroy_clients(display);
        wl_display_destroy(display);
    }

    void run() {
        auto* const loop = wl_display_get_event_loop(display);
        while (!isEnding) {
            wl_display_flush_clients(display);
            pollfd watched[] = {{wl_event_loop_get_fd(loop), POLLIN, 0}, {orders.descriptor(), POLLIN, 0}};
            poll(watched, 2, -1);
            orders.hush();
            wl_event_loop_dispatch(loop, 0);
            if (!isOrdered) continue;
            keymap = *next;
            for (auto* const keyboard : keyboards) sendKeymap(keyboard);
            wl_display_flush_clients(display);
            isOrdered = false;
        }
    }

    void sendKeymap(wl_resource* keyboard) const {
        FileDescriptor const file(memfd_create("keymap", MFD_CLOEXEC));
        auto const size = keymap.size() + 1; // with the zero byte
        if (write(file.get(), keymap.c_str(), size) != static_cast<ssize_t>(size)) abort();
        wl_keyboard_send_keymap(keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file.get(),
                                static_cast<std::uint32_t>(size));
    }

    static void bindSeat(wl_client* client, void* here, std::uint32_t /*version*/, std::uint32_t id) {
        static constexpr struct wl_seat_interface seatRequests {
            [](wl_client*, wl_resource*, std::uint32_t) {}, giveKeyboard,
                [](wl_client*, wl_resource*, std::uint32_t) {}, [](wl_client*, wl_resource*) {}
        };
        auto* const seat = wl_resource_create(client, &wl_seat_interface, 1, id);
        wl_resource_set_implementation(seat, &seatRequests, here, nullptr);
        wl_seat_send_capabilities(seat, WL_SEAT_CAPABILITY_KEYBOARD);
    }

    static void giveKeyboard(wl_client* client, wl_resource* seat, std::uint32_t id) {
        static constexpr struct wl_keyboard_interface keyboardRequests {
            [](wl_client*, wl_resource*) {}
        };
        auto& state = *static_cast<State*>(wl_resource_get_user_data(seat));
        auto* const keyboard = wl_resource_create(client, &wl_keyboard_interface, 1, id);
        wl_resource_set_implementation(keyboard, &keyboardRequests, &state, [](wl_resource* gone) {
            std::erase(static_cast<State*>(wl_resource_get_user_data(gone))->keyboards, gone);
        });
        state.keyboards.push_back(keyboard);
        state.sendKeymap(keyboard);
    }
};

TestCompositor::TestCompositor(std::string const& layout)
    : TestCompositor(std::make_unique<State>(keymapOfLayout(layout))) {}
TestCompositor::TestCompositor(std::unique_ptr<State> state) : state_(std::move(state)) {}
TestCompositor::TestCompositor(TestCompositor&& other) noexcept = default;
TestCompositor::~TestCompositor() = default;

TestCompositor TestCompositor::withKeymap(std::string const& keymap) {
    return TestCompositor(std::make_unique<State>(keymap));
}

void TestCompositor::use(std::string const& layout) {
    state_->next = keymapOfLayout(layout);
    state_->isOrdered = true;
    state_->orders.ring();
    while (state_->isOrdered) std::this_thread::yield();
}

void TestCompositor::end() { state_->end(); }

}
