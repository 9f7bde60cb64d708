#include <Tavaro/Studio/Loop/SignalsInLoop.h>

#include <QSocketNotifier>

#include <TavaroPlatform/Sockets/Bell.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <sys/eventfd.h>
#include <unistd.h>

namespace tavaro {

namespace {

constexpr std::array<int, 3> signals{SIGINT, SIGTERM, SIGHUP};
constexpr std::int64_t grace = 3; // seconds, in which keys and buttons that an agent's call holds are let go of

std::array<struct sigaction, signals.size()> before{};
std::atomic<int> bell = -1;             // rung by a signal, on whichever thread
std::atomic<std::int64_t> endsFrom = 0; // by the monotonic clock, once there was a signal

std::int64_t now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec;
}

void note(int signal) {
    auto const limit = endsFrom.load();
    if (limit == 0) endsFrom = now() + grace;
    if (limit != 0 && signal != SIGHUP && now() >= limit) _exit(128 + signal);
    ::eventfd_write(bell, 1);
}

Bell& ownBell() {
    static Bell bell;
    return bell;
}

}

SignalsInLoop::SignalsInLoop(std::function<void()> ending) : ending_(std::move(ending)) {
    endsFrom = 0;
    bell = ownBell().descriptor();
    auto* const notifier = new QSocketNotifier(bell, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        ownBell().hush();
        ending_();
    });
    struct sigaction action {};
    action.sa_handler = note;
    action.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < signals.size(); ++i) sigaction(signals[i], &action, &before[i]);
}

SignalsInLoop::~SignalsInLoop() {
    for (std::size_t i = 0; i < signals.size(); ++i) sigaction(signals[i], &before[i], nullptr);
}

}
