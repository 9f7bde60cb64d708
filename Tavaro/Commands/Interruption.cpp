#include <Tavaro/Commands/Interruption.h>

#include <array>
#include <csignal>
#include <unistd.h>

namespace tavaro {

namespace {

volatile std::sig_atomic_t requested = 0;
constexpr std::array<int, 3> signals{SIGINT, SIGTERM, SIGHUP};
std::array<struct sigaction, signals.size()> before{};

void note(int signal) {
    if (requested) _exit(128 + signal);
    requested = 1;
}

}

Interruption::Interruption() {
    requested = 0;
    struct sigaction action {};
    action.sa_handler = note;
    action.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < signals.size(); ++i) sigaction(signals[i], &action, &before[i]);
}

Interruption::~Interruption() {
    for (std::size_t i = 0; i < signals.size(); ++i) sigaction(signals[i], &before[i], nullptr);
}

bool Interruption::isRequested() const { return requested != 0; }

}
