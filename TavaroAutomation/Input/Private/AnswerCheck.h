#pragma once

#include <TavaroAutomation/Input/Private/FakeInput.h>

#include <stop_token>

namespace tavaro::x11 {

/// Throws `AutomationError` (`noElements`) where the program whose window is under the pointer says that it answers
/// whoever asks whether it does, and is silent for a second.
void expectAnswerUnderPointer(FakeInput& input, std::stop_token const& stop);

}
