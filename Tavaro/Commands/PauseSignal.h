#pragma once

namespace tavaro::commands {

/// SIGUSR1, turned into a question that a recording asks now and then: shortcuts of the desktop send it to pause a take
/// and to go on. One at a time, on the main thread.
class PauseSignal {
public:
    PauseSignal();
    ~PauseSignal();
    PauseSignal(PauseSignal const&) = delete;
    PauseSignal& operator=(PauseSignal const&) = delete;

    /// Whether one came since the last call; two are as good as none.
    bool take();
};

}
