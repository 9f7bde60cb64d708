#pragma once

#include <chrono>

namespace tavaro {

/// Ctrl-C and SIGTERM, turned into a question that long work asks now and then. While one exists, the first signal only
/// sets the flag; another one ends the process at once, with the usual exit code, unless it comes within the grace that
/// the work needs to let go of what is not its own: keys and buttons of the desktop. One at a time, on the main thread.
class Interruption {
public:
    explicit Interruption(std::chrono::milliseconds grace = std::chrono::milliseconds(0));
    ~Interruption();
    Interruption(Interruption const&) = delete;
    Interruption& operator=(Interruption const&) = delete;

    bool isRequested() const;
};

}
