#pragma once

#include <TavaroCore/Errors/Error.h>

#include <stop_token>

namespace tavaro {

/// Another application cannot be looked at or controlled as asked.
class AutomationError : public Error {
public:
    enum class Kind {
        noDisplay,      // no X server answers, or the desktop is a Wayland one
        noSuchProgram,  // no application has that name
        notStarted,     // the application shows no window in time
        noWindow,       // the application shows no window now
        noElements,     // the application does not say what is in its windows
        noSuchElement,  // nothing matches, or what did is gone
        disabled,       // the element takes no clicks now
        notShown,       // the element is covered, or scrolled away
        invalidRequest, // what was asked cannot be read
        userMoved,      // the user took the mouse
        cancelled,      // whoever asked for it took that back
        failed,         // the display or the application refused
    };

    AutomationError(Kind kind, std::string const& sentence) : Error(sentence), kind(kind) {}
    Kind const kind;
};

/// Throws `AutomationError` (`cancelled`) where whoever asked for an action has taken that back.
inline void expectNotStopped(std::stop_token const& stop) {
    if (stop.stop_requested()) throw AutomationError(AutomationError::Kind::cancelled, "The action was cancelled.");
}

}
