#pragma once

#include <TavaroAutomation/Values/UIRect.h>
#include <TavaroCapture/X11/Desktop.h>

#include <optional>
#include <string>
#include <vector>

/// The windows of the desktop as their programs and the window manager describe them.
namespace tavaro::x11 {

UIRect uiRect(PixelRect const& rect);

struct OpenWindow {
    /// By which desktop id its program was started, or asked for the window; empty where nobody left that. What is not
    /// its own may be that of a terminal that it was started from.
    struct Launch {
        std::string entry;
        bool isOwn = false;
    };

    xcb_window_t window = XCB_NONE;   // its contents
    xcb_window_t topLevel = XCB_NONE; // with the window manager's frame
    int pid = 0;                      // 0 where it does not say
    std::string title;
    WindowClass windowClass;
    ApplicationIdentity application;      // as the desktop calls it
    xcb_window_t transientFor = XCB_NONE; // of a dialog
    std::string gtkApplicationID;         // what a GTK program calls itself: "org.gnome.TextEditor"
    Launch launch;
    UIRect contents;      // without the window manager's frame
    UIRect frame;         // as people see the window
    bool isPopup = false; // a menu, a list, a tooltip: the window manager leaves it alone
    bool isMinimized = false;
    bool isShaded = false; // rolled up to its title bar
    bool isModal = false;  // a dialog that has to be answered first
    bool isSplash = false; // that a program shows while it starts

    /// Whether the desktop has an entry for what the window says of itself.
    bool isOfInstalled() const { return application.bundleID != windowClass.name; }
};

/// Frontmost first, popups too; without desktops, docks and tooltips. Throws `AutomationError` when the server is gone.
std::vector<OpenWindow> openWindows(Connection& connection);
/// Writes on the window which entry asked its program for it, for a program may have shown windows of other entries
/// before.
void markLaunch(Connection& connection, xcb_window_t window, std::string const& entry);
/// Nothing when it is gone.
std::optional<OpenWindow> openWindow(Connection& connection, xcb_window_t topLevel);

}
