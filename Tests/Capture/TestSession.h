#pragma once

#include "TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace tavaro {

/// A variable of this process's environment while it lives.
class ScopedVariable {
public:
    ScopedVariable(std::string name, std::string const& value);
    ~ScopedVariable();
    ScopedVariable(ScopedVariable&& other) noexcept
        : name_(std::exchange(other.name_, {}))
        , before_(std::move(other.before_)) {}
    ScopedVariable& operator=(ScopedVariable&&) = delete;

private:
    std::string name_;
    std::optional<std::string> before_;
};

/// A program that ends with this process at the latest.
class TestProcess {
public:
    explicit TestProcess(std::vector<std::string> const& command, std::filesystem::path const& log = "/dev/null");
    ~TestProcess() { kill(); }
    TestProcess(TestProcess const&) = delete;
    TestProcess& operator=(TestProcess const&) = delete;
    void kill();

private:
    pid_t process_ = -1;
};

/// A session of its own as a desktop has one: a bus, a PipeWire server and what links its nodes, without a display or a
/// sound card. This process belongs to it while it lives.
class TestSession {
public:
    enum class Sound { off, on }; // whether it answers PulseAudio's protocol, too
    explicit TestSession(Sound sound = Sound::off);
    static bool isInstalled();

    std::filesystem::path const& folder() const { return folder_.path(); }
    void killServer() { server_.reset(); }
    /// Has the session's bus for what programs say of their widgets, which those tell that are started after it.
    void startAccessibility();

private:
    TemporaryFolder folder_;
    std::vector<ScopedVariable> variables_;
    std::optional<TestProcess> bus_;
    std::optional<TestProcess> server_;
    std::optional<TestProcess> links_;
    std::optional<TestProcess> sound_;
    std::optional<TestProcess> accessibility_;
};

}
