#include <TavaroAutomation/Input/Private/AnswerCheck.h>

#include <TavaroAutomation/Applications/Private/WindowManager.h>
#include <TavaroAutomation/Errors/AutomationError.h>

#include <algorithm>

namespace tavaro::x11 {

using namespace std::chrono_literals;

namespace {

constexpr auto longestAnswer = 1s;
constexpr auto betweenLooks = 5ms;

/// Programs answer to the root window, for window managers; those of Qt to who listens for changes of it.
void listenOnRoot(Connection& connection) {
    std::uint32_t const mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection.get(), connection.root(), XCB_CW_EVENT_MASK, &mask);
}

bool isAnswer(Connection& connection, xcb_generic_event_t const& event, xcb_window_t window) {
    if ((event.response_type & 0x7f) != XCB_CLIENT_MESSAGE) return false;
    auto const& message = reinterpret_cast<xcb_client_message_event_t const&>(event);
    return message.data.data32[0] == connection.atom("_NET_WM_PING") && message.data.data32[2] == window;
}

bool answers(Connection& connection, xcb_window_t window, std::stop_token const& stop) {
    listenOnRoot(connection);
    askProgram(connection, window, "WM_PROTOCOLS", {connection.atom("_NET_WM_PING"), XCB_CURRENT_TIME, window});
    connection.synchronize();
    for (auto const latest = InputClock::now() + longestAnswer; InputClock::now() < latest;) {
        while (auto const event = connection.poll()) {
            if (isAnswer(connection, *event, window)) return true;
        }
        rest(betweenLooks, stop);
    }
    return false;
}

}

void expectAnswerUnderPointer(FakeInput& input, std::stop_token const& stop) {
    Connection connection(input.display()); // whose events are not those of the pointer
    auto const pointer = connection.ask<xcb_query_pointer, xcb_query_pointer_reply>(connection.root());
    if (!pointer || pointer->child == XCB_NONE) return;
    auto const window = clientWindow(connection, pointer->child);
    auto const protocols = connection.cardinals(window, "WM_PROTOCOLS");
    bool const canAnswer = std::ranges::find(protocols, connection.atom("_NET_WM_PING")) != protocols.end();
    if (!canAnswer || answers(connection, window, stop)) return;
    throw AutomationError(AutomationError::Kind::noElements,
                          "The application under the pointer does not answer, so nothing may have been scrolled.");
}

}
