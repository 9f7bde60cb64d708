#include <TavaroAutomation/Applications/Private/WindowManager.h>

#include <algorithm>
#include <cstring>

namespace tavaro::x11 {

namespace {

xcb_client_message_event_t message(Connection& connection, xcb_window_t window, char const* what,
                                   std::array<std::uint32_t, 5> const& values) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = connection.atom(what);
    std::ranges::copy(values, event.data.data32);
    return event;
}

void send(Connection& connection, xcb_window_t to, std::uint32_t mask, xcb_client_message_event_t const& event) {
    std::array<char, 32> bytes{};
    static_assert(sizeof event == bytes.size());
    std::memcpy(bytes.data(), &event, bytes.size());
    xcb_send_event(connection.get(), 0, to, mask, bytes.data());
}

}

bool hasWindowManager(Connection& connection) {
    return !connection.cardinals(connection.root(), "_NET_SUPPORTING_WM_CHECK").empty();
}

void askWindowManager(Connection& connection, xcb_window_t window, char const* what,
                      std::array<std::uint32_t, 5> const& values) {
    constexpr std::uint32_t whoManages = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT;
    send(connection, connection.root(), whoManages, message(connection, window, what, values));
}

void askProgram(Connection& connection, xcb_window_t window, char const* what,
                std::array<std::uint32_t, 5> const& values) {
    send(connection, window, XCB_EVENT_MASK_NO_EVENT, message(connection, window, what, values));
}

}
