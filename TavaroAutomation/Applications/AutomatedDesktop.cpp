#include <TavaroAutomation/Applications/Private/AutomatedDesktop.h>

#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroCapture/Sources/CaptureError.h>

#include <cstdlib>

namespace tavaro::x11 {

namespace {

bool isSet(char const* variable) {
    char const* const value = std::getenv(variable);
    return value && *value;
}

}

Connection automatedDesktop(std::string const& display) {
    if (display.empty() && !isSet("DISPLAY")) {
        if (isSet("WAYLAND_DISPLAY")) refuseWayland();
        refuseDesktop("DISPLAY is not set, so no X server is known. Start Tavaro in the desktop's session, or on a "
                      "virtual display (Xvfb).");
    }
    try {
        return Connection(display);
    } catch (CaptureError const& error) {
        if (isSet("WAYLAND_DISPLAY")) refuseWayland();
        throw AutomationError(AutomationError::Kind::noDisplay, error.what());
    }
}

void expectAlive(Connection const& connection) {
    if (!connection.isAlive()) refuseGone();
}

void refuseGone() { throw AutomationError(AutomationError::Kind::failed, "The display went away."); }

void refuseDesktop(std::string const& reason) {
    throw AutomationError(AutomationError::Kind::noDisplay,
                          "Other applications cannot be clicked, typed into or pictured here: " + reason);
}

void refuseWayland() {
    refuseDesktop("a Wayland session lets no program move the pointer or press keys for others. Log in to a session "
                  "“on Xorg”, or run Tavaro and the application on a virtual display (Xvfb).");
}

}
