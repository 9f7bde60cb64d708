#pragma once

#include <TavaroAutomation/Input/Private/FakeInput.h>
#include <TavaroAutomation/Input/Private/KeyboardLayout.h>

#include <cstdint>
#include <set>
#include <stop_token>

namespace tavaro::x11 {

/// Who waits for shortcuts of the whole desktop, as a window manager does, gives its keys back and takes them anew when
/// the keyboard changes, a moment later than it does; in between they go to the window in front. A keyboard changes
/// when another device is typed on than before, as this program's is after the user's own, and when a key gets another
/// meaning.
class DesktopShortcuts {
public:
    DesktopShortcuts(FakeInput& input, KeyboardChanges& changes);
    ~DesktopShortcuts();
    DesktopShortcuts(DesktopShortcuts const&) = delete;
    DesktopShortcuts& operator=(DesktopShortcuts const&) = delete;

    /// Makes this program's keyboard the one in use, without a key that anybody sees, and waits until the others have
    /// their keys again: two seconds at most, where the machine is busy.
    void settle(std::stop_token const& stop);

private:
    /// False where there is none that answers.
    bool awaitWindowManager(std::stop_token const& stop);

    FakeInput& input_;
    KeyboardChanges& changes_;
    xcb_window_t question_ = XCB_NONE; // a window of ours that is never shown
    int changesSettled_ = 0;
};

}
