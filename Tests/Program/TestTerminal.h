#pragma once

#include <cstdlib>
#include <functional>
#include <string>
#include <sys/types.h>

namespace tavaro {

/// A terminal with a process that has it for its own; ended with SIGKILL when nobody waited for it.
class TestTerminal {
public:
    /// `work` runs there; then the process ends well.
    explicit TestTerminal(std::function<void()> const& work);
    ~TestTerminal();
    TestTerminal(TestTerminal const&) = delete;
    TestTerminal& operator=(TestTerminal const&) = delete;

    void type(std::string const& text) const;
    /// What is shown until it ends so, or nothing comes for ten seconds; only what was not returned yet.
    std::string shownUntil(std::string const& end) const;
    /// As when its window is closed.
    void close();
    /// Waits for the process. 128 + the signal's number where one ended it.
    int exitCode();

private:
    pid_t process_ = 0;
    int descriptor_ = -1;
};

}
