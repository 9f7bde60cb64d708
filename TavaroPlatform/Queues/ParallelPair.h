#pragma once

#include <TavaroCore/Records/FunctionRef.h>

namespace tavaro {

/// Runs both at the same time where the machine has a second processor and a thread is to be had, else one after the
/// other. A `TaskPairRunner`.
void runInParallel(FunctionRef<void()> first, FunctionRef<void()> second);

}
