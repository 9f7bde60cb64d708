#pragma once

#include <chrono>
#include <string_view>

namespace tavaro {

/// Ctrl-C, SIGTERM and SIGHUP, turned into a question that long work asks now and then. While one exists, the first
/// signal only sets the flag; another one ends the process at once, with the usual exit code, but for SIGHUP: whose
/// terminal is gone is not impatient. One at a time, on the main thread.
class Interruption {
public:
    struct Options {
        /// In which another signal does nothing. Some senders send two at once, to the program and to its group. Longer
        /// where the work has to let go of what is not its own, as keys and buttons of the desktop.
        std::chrono::milliseconds grace{500};
        /// Written to standard error where another signal ends the process: what becomes of the work. Static.
        std::string_view farewell = {};
    };
    explicit Interruption(Options const& options);
    Interruption() : Interruption(Options{}) {}
    ~Interruption();
    Interruption(Interruption const&) = delete;
    Interruption& operator=(Interruption const&) = delete;

    bool isRequested() const;
};

}
