#include <TavaroCore/Records/TaskPair.h>

#include <atomic>

namespace tavaro {

namespace {

void runInTurn(FunctionRef<void()> first, FunctionRef<void()> second) {
    first();
    second();
}

std::atomic<TaskPairRunner> pairRunner = runInTurn;

}

void setTaskPairRunner(TaskPairRunner runner) { pairRunner = runner; }

void runBoth(FunctionRef<void()> first, FunctionRef<void()> second) { pairRunner.load()(first, second); }

}
