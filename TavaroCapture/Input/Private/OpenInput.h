#pragma once

#include <TavaroCapture/Input/InputConsent.h>
#include <TavaroCapture/Sources/KeyLogging.h>
#include <TavaroCapture/Sources/Private/EventSource.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavaro::input {

enum class DesktopPointer { told, untold }; // where it is

struct InputRequest {
    std::optional<InputConsent> consent;
    DesktopPointer pointer = DesktopPointer::told;
    KeyLogging keys = KeyLogging::all;
};

/// What the desktop tells, with clicks and keys from the input devices where the user allows that; nothing is opened
/// otherwise. What the take then lacks is in the source's limits.
std::unique_ptr<EventSource> withInput(std::unique_ptr<EventSource> desktop, InputRequest const& request);

/// The same as sentences, without opening anything: what a take would lack.
std::vector<std::string> inputLimits(InputRequest const& request);

}
