#pragma once

#include <TavaroCore/Records/FunctionRef.h>

namespace tavaro {

/// Runs two tasks that share nothing, the second perhaps on another thread, and returns when neither runs any more.
/// Throws what they throw, the first's before the second's; where the first throws, the second may not have run.
using TaskPairRunner = void (*)(FunctionRef<void()> first, FunctionRef<void()> second);

/// Threads are not started here, so the program says once, at its start, how pairs are run; until then one after the
/// other. Any thread.
void setTaskPairRunner(TaskPairRunner runner);

/// Any thread.
void runBoth(FunctionRef<void()> first, FunctionRef<void()> second);

}
