#include "ServingApplication.h"

#include <Tavaro/Agents/MCPConsent.h>

#include <TavaroMCP/Bridge/MCPSocketPath.h>
#include <TavaroPlatform/Preferences/Preferences.h>
#include <TavaroPlatform/Sockets/UnixSocket.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fmt/format.h>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace tavaro {

namespace {

void moveInto(std::filesystem::path const& home) {
    setenv("HOME", home.c_str(), 1);
    for (auto const* const name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME", "DISPLAY"})
        unsetenv(name);
    Preferences preferences;
    MCPConsent(preferences).allow("bench");
}

/// Without a terminal, so nobody can be asked.
DetachedProcess startApplication() {
    auto const process = DetachedProcess::start({TAVARO_PROGRAM, "serve"});
    if (!process) throw std::runtime_error("tavaro serve cannot be started.");
    return *process;
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

ServingApplication::ServingApplication(std::filesystem::path const& home)
    : process_((moveInto(home), startApplication())) {
    waitUntilItListens();
}

ServingApplication::~ServingApplication() {
    kill(process_.process(), SIGTERM);
    while (!process_.hasEnded()) std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

MemoryUse ServingApplication::memory() const {
    constexpr double kibibytes = 1024;
    std::ifstream status(fmt::format("/proc/{}/smaps_rollup", process_.process()));
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
