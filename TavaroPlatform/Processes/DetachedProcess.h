#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace tavaro {

/// The file of a program: beside this one, else where the user's search path has it. None where it is nowhere.
std::optional<std::filesystem::path> findProgram(std::string_view name);
/// The same for a program that users do not start themselves, which packages put into a folder of its own.
std::optional<std::filesystem::path> findHiddenProgram(std::string_view name);

/// A program that was started to go on by itself, also when this one ends or is ended by a signal to all that a
/// terminal runs. It reads nothing from here, and what it prints is dropped.
class DetachedProcess {
public:
    /// The first word is the program's file. It has this program's variables and `more` ("NAME=value"), which go
    /// before; it starts in `folder`, lest the folder here is removed under it. None where it cannot be started.
    static std::optional<DetachedProcess> start(std::vector<std::string> const& command,
                                                std::vector<std::string> const& more = {},
                                                std::filesystem::path const& folder = "/");

    /// Its number, which is that of its session too: of all that it starts.
    pid_t process() const { return process_; }
    bool hasEnded();
    /// Whether it has ended, and not well. How it has is not known where this program ignores the end of what it starts
    /// (SIGCHLD); then any end is a failure.
    bool hasFailed();

private:
    explicit DetachedProcess(pid_t process) : process_(process) {}

    pid_t process_;
    std::optional<int> status_; // once it has ended; -1 where it is not known how
};

}
