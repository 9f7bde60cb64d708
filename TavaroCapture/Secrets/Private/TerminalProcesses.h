#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tavaro {

/// A running program, as far as terminals matter to it.
struct TerminalProcess {
    std::string name; // 15 characters at most
    int id = 0;
    int parent = 0;
    int group = 0;
    int terminal = 0;   // of /dev/pts; below 0: none
    int foreground = 0; // the group that has the terminal

    /// Whether keys go to it, or to who runs with it.
    bool isInFront() const { return group == foreground; }
};

/// All that run, by `folder`, which is /proc. Some 15 µs a process.
std::vector<TerminalProcess> runningProcesses(std::filesystem::path const& folder);

/// Those that the process started, and that those started.
std::vector<TerminalProcess const*> startedBy(int process, std::vector<TerminalProcess> const& all);

}
