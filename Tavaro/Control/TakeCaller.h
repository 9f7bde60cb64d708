#pragma once

#include <Tavaro/Model/Recording/RecordingController.h>

#include <filesystem>
#include <vector>

namespace tavaro {

/// A take that another program of the user runs.
struct RunningTake {
    std::filesystem::path socket; // by which it is known
    RecorderPhase phase = RecorderPhase::idle;
    double seconds = 0; // of it so far

    bool operator==(RunningTake const&) const = default;
};

enum class TakeOrder {
    pause, // or go on, where it is paused
    stop,  // or cancel, where it has not begun
};

/// Those whose programs answer, sorted by their sockets. Waits for each a second at most.
std::vector<RunningTake> runningTakes(std::filesystem::path const& folder);

/// Does nothing where the take is over, or does not fit. Waits likewise.
void orderTake(std::filesystem::path const& take, TakeOrder order);

}
