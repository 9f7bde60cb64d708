#include <Tavaro/Commands/Interruption.h>

#include <array>
#include <atomic>
#include <csignal>
#include <unistd.h>

namespace tavaro {

namespace {

std::atomic<bool> requested = false; // signals come on any thread
static_assert(std::atomic<bool>::is_always_lock_free);
constexpr std::array<int, 3> signals{SIGINT, SIGTERM, SIGHUP};
std::array<struct sigaction, signals.size()> before{};

void note(int signal) {
    if (requested.exchange(true)) _exit(128 + signal);
}

}

Interruption::Interruption() {
    requested = false;
    struct sigaction action {};
    action.sa_handler = note;
    action.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < signals.size(); ++i) sigaction(signals[i], &action, &before[i]);
}

Interruption::~Interruption() {
    for (std::size_t i = 0; i < signals.size(); ++i) sigaction(signals[i], &before[i], nullptr);
}

bool Interruption::isRequested() const { return requested; }

}
