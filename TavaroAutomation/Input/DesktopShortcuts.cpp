#include <TavaroAutomation/Input/Private/DesktopShortcuts.h>

#include <TavaroAutomation/Applications/Private/WindowManager.h>

namespace tavaro::x11 {

using namespace std::chrono_literals;

namespace {

constexpr auto longestAnswer = 2s;
constexpr auto betweenAsking = 2ms;
constexpr auto othersToo = 60ms;      // whom nobody can ask: programs that wait for a shortcut of their own
constexpr auto withoutAnswer = 250ms; // of a window manager that cannot be asked

constexpr auto answerProperty = "_NET_FRAME_EXTENTS";

xcb_window_t hiddenWindow(Connection& connection) {
    xcb_window_t const window = xcb_generate_id(connection.get());
    xcb_create_window(connection.get(), XCB_COPY_FROM_PARENT, window, connection.root(), 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    return window;
}

}

DesktopShortcuts::DesktopShortcuts(FakeInput& input, KeyboardChanges& changes)
    : input_(input)
    , changes_(changes)
    , question_(hiddenWindow(input.connection())) {}

DesktopShortcuts::~DesktopShortcuts() { xcb_destroy_window(input_.connection().get(), question_); }

void DesktopShortcuts::settle(std::stop_token const& stop) {
    input_.touchKeyboard();
    bool const isAnswered = awaitWindowManager(stop);
    if (changes_.countSoFar() == changesSettled_) return;
    changesSettled_ = changes_.countSoFar();
    rest(isAnswered ? othersToo : withoutAnswer, stop);
}

/// It is asked how wide it would frame a window, after the server told it that the keyboard changed; who answers has
/// dealt with what came before the question.
bool DesktopShortcuts::awaitWindowManager(std::stop_token const& stop) {
    auto& connection = input_.connection();
    if (!hasWindowManager(connection)) return false;
    xcb_delete_property(connection.get(), question_, connection.atom(answerProperty));
    askWindowManager(connection, question_, "_NET_REQUEST_FRAME_EXTENTS");
    xcb_flush(connection.get());
    auto const latest = InputClock::now() + longestAnswer;
    while (connection.cardinals(question_, answerProperty).empty()) {
        if (InputClock::now() > latest) return false;
        rest(betweenAsking, stop);
    }
    return true;
}

}
