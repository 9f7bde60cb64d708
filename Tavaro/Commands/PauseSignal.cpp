#include <Tavaro/Commands/PauseSignal.h>

#include <atomic>
#include <csignal>

namespace tavaro::commands {

namespace {

std::atomic<unsigned> signals = 0; // they come on any thread
static_assert(std::atomic<unsigned>::is_always_lock_free);
struct sigaction before {};

void note(int /*signal*/) { ++signals; }

}

PauseSignal::PauseSignal() {
    signals = 0;
    struct sigaction action {};
    action.sa_handler = note;
    action.sa_flags = SA_RESTART;
    sigaction(SIGUSR1, &action, &before);
}

PauseSignal::~PauseSignal() { sigaction(SIGUSR1, &before, nullptr); }

bool PauseSignal::take() { return signals.exchange(0) % 2 == 1; }

}
