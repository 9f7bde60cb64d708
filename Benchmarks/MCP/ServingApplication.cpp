#include "ServingApplication.h"

#include <Tavaro/Agents/MCPConsent.h>

#include <TavaroMCP/Bridge/MCPSocketPath.h>
#include <TavaroPlatform/Preferences/Preferences.h>
#include <TavaroPlatform/Sockets/UnixSocket.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fmt/format.h>
#include <fstream>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace tavaro {

namespace {

void moveInto(std::filesystem::path const& home) {
    setenv("HOME", home.c_str(), 1);
    for (auto const* const name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME", "DISPLAY"})
        unsetenv(name);
    Preferences preferences;
    MCPConsent(preferences).allow("bench");
}

[[noreturn]] void becomeApplication() {
    int const nothing = open("/dev/null", O_RDWR);
    for (int const stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(nothing, stream);
    setsid(); // nobody can be asked
    execl(TAVARO_PROGRAM, "tavaro", "serve", nullptr);
    _exit(127);
}

void waitUntilItListens() {
    constexpr int mostTries = 1000;
    for (int i = 0; i < mostTries; ++i) {
        if (UnixSocket::connect(mcpSocketPath())) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    throw std::runtime_error("tavaro serve does not listen.");
}

}

ServingApplication::ServingApplication(std::filesystem::path const& home) {
    moveInto(home);
    process_ = fork();
    if (process_ == 0) becomeApplication();
    waitUntilItListens();
}

ServingApplication::~ServingApplication() {
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
}

MemoryUse ServingApplication::memory() const {
    constexpr double kibibytes = 1024;
    std::ifstream status(fmt::format("/proc/{}/smaps_rollup", process_));
    MemoryUse use;
    std::string heading;
    std::getline(status, heading);
    std::string name, unit;
    double value = 0;
    while (status >> name >> value >> unit) {
        if (name == "Rss:") use.resident = value / kibibytes;
        if (name == "Anonymous:") use.anonymous = value / kibibytes;
    }
    return use;
}

}
