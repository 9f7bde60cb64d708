#pragma once

#include <TavaroAutomation/Applications/Private/OpenWindows.h>
#include <TavaroAutomation/Applications/Private/StartedPrograms.h>
#include <TavaroAutomation/Applications/UIAppInfo.h>

#include <chrono>
#include <stop_token>
#include <string>

namespace tavaro {

/// An application that is to be opened.
struct ApplicationStart {
    std::string name;          // as it was asked for, or the path of its program
    std::string display;       // ":0"; empty for this program's
    StartedPrograms& programs; // knows of it afterwards
    std::stop_token stop = {};

    // An office suite on a busy machine takes ten seconds the first time.
    std::chrono::milliseconds longest = std::chrono::seconds(30);
    // What runs already is told of a second start, and shows its window when the second one has ended.
    std::chrono::milliseconds longestAfterEnd = std::chrono::seconds(8);
};

/// Brings the application's window to the front, after starting it where it shows none, and waits until the window is
/// painted and has the keyboard. Splash screens are waited for. Throws `AutomationError` when the program fails, and
/// where there is no window in time.
UIAppInfo openApplication(x11::Connection& connection, ApplicationStart const& start);

}
