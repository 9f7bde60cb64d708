#include <Tavaro/Commands/Interruption.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <unistd.h>

namespace tavaro {

namespace {

std::atomic<bool> requested = false; // signals come on any thread
static_assert(std::atomic<bool>::is_always_lock_free);
constexpr std::array<int, 3> signals{SIGINT, SIGTERM, SIGHUP};
std::array<struct sigaction, signals.size()> before{};

// Milliseconds of the monotonic clock, before which another signal does nothing; set before `requested`.
std::atomic<std::int64_t> graceEnds = 0;
std::int64_t graceMilliseconds = 0; // of the present interruption
std::string_view farewell;          // the same

std::int64_t now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time); // which a signal may ask, too
    return std::int64_t{time.tv_sec} * 1000 + time.tv_nsec / 1'000'000;
}

void note(int signal) {
    if (!requested) graceEnds = now() + graceMilliseconds;
    if (!requested.exchange(true) || signal == SIGHUP || now() < graceEnds) return;
    [[maybe_unused]] auto const told = write(STDERR_FILENO, farewell.data(), farewell.size());
    _exit(128 + signal);
}

}

Interruption::Interruption(Options const& options) {
    requested = false;
    graceMilliseconds = options.grace.count();
    farewell = options.farewell;
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
