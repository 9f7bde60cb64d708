#pragma once

#include <TavaroAutomation/Applications/UIAppInfo.h>
#include <TavaroAutomation/Driving/UIRequests.h>

#include <memory>
#include <stop_token>
#include <string>

namespace tavaro {

/// Looks at other applications and works them as a person would, with the real pointer and keyboard.
///
/// Every call blocks until it is done, so agents' calls run on a queue of their own: one thread at a time. A stop that
/// is requested ends all input within 50 ms, in the middle of a glide too, and leaves nothing pressed; the call itself
/// may end up to a second later, when it has to give keys back that it made to mean what the layout lacks. All throw
/// `AutomationError`. A listing gives programs two seconds to answer, so that one that hangs costs no more.
class UIAutomation {
public:
    /// `display` as in `$DISPLAY`, which an empty one means. Throws where there is no X11 desktop.
    explicit UIAutomation(std::string const& display = {});
    ~UIAutomation();
    UIAutomation(UIAutomation const&) = delete;
    UIAutomation& operator=(UIAutomation const&) = delete;

    /// Starts it where it shows no window, and brings its window to the front.
    UIAppInfo openApp(std::string const& app, std::stop_token const& stop = {});

    /// What can be clicked in its windows; what is out of view last. In the first second after a window came, a program
    /// may not say anything yet: then it is asked again.
    UIElementListing elements(UIElementsRequest const& request, std::stop_token const& stop = {});

    /// Brings the element's window to the front and closes a menu that is in the way. The element is asked for its
    /// place once more when the pointer is there, for some programs know it only then.
    UIActionReport click(UIClickRequest const& request, std::stop_token const& stop = {});
    /// Over an element that is scrolled away: over what scrolls it.
    UIActionReport scroll(UIScrollRequest const& request, std::stop_token const& stop = {});
    /// In the window that has the keyboard. What cannot be read as a shortcut is refused before the first key.
    void keys(UIKeysRequest const& request, std::stop_token const& stop = {});

    /// Also of a window that is covered.
    UIPicture screenshot(UIScreenshotRequest const& request, std::stop_token const& stop = {});

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
