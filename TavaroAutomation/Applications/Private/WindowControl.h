#pragma once

#include <TavaroAutomation/Applications/Private/OpenWindows.h>

#include <chrono>
#include <functional>
#include <stop_token>

/// What is asked of a window, and waited for.
namespace tavaro::x11 {

using Deadline = std::chrono::steady_clock::time_point;

/// Between looks at all windows, each of which takes a dozen questions.
constexpr std::chrono::milliseconds betweenLooksAtWindows{30};

/// Asks every `pause`. False when that is not so by the deadline. Throws `AutomationError` when stopped.
bool waitUntil(Deadline deadline, std::stop_token const& stop, std::function<bool()> const& isSo,
               std::chrono::milliseconds pause = std::chrono::milliseconds(5));

/// Brings the window to the front, also from an icon, its title bar and another desktop, and waits until it has the
/// keyboard and its place: keys that are sent before go elsewhere. False when it does not show, or has not the
/// keyboard, in a second.
bool bringToFront(Connection& connection, OpenWindow const& window, std::stop_token const& stop);
/// Moves the window so that it is on a display, or where it is larger, that part of it. False where that is on one.
bool bringOnDisplay(Connection& connection, OpenWindow const& window, UIRect const& part, std::stop_token const& stop);
/// Waits until something is drawn in the window and no more than a caret changes, three seconds at most.
void waitUntilPainted(Connection& connection, xcb_window_t window, std::stop_token const& stop);

}
