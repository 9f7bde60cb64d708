#pragma once

namespace tavaro {

/// Ctrl-C and SIGTERM, turned into a question that long work asks now and then. While one exists, the first signal only
/// sets the flag; the second ends the process at once, with the usual exit code. One at a time, on the main thread.
class Interruption {
public:
    Interruption();
    ~Interruption();
    Interruption(Interruption const&) = delete;
    Interruption& operator=(Interruption const&) = delete;

    bool isRequested() const;
};

}
