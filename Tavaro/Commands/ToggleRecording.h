#pragma once

#include <Tavaro/Commands/MadeTakeText.h>

namespace tavaro::commands {

/// Begins or ends a take of the application that runs, and prints where it was saved. Throws `Error`.
void toggleRecording(TakeOutput output);

}
