#pragma once

#include <TavaroAutomation/Applications/Private/OpenWindows.h>
#include <TavaroAutomation/Applications/UIAppInfo.h>

#include <stop_token>
#include <string>

namespace tavaro {

/// An application that is to be opened.
struct ApplicationStart {
    std::string name;    // as it was asked for
    std::string display; // ":0"; empty for this program's
    std::stop_token stop;
};

/// Brings the application's window to the front, after starting it where it shows none, and waits until the window is
/// painted and has the keyboard. Splash screens are waited for. Throws `AutomationError` after 30 s without a window.
UIAppInfo openApplication(x11::Connection& connection, ApplicationStart const& start);

}
