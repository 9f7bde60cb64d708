#pragma once

#include <cstdint>
#include <deque>
#include <optional>

namespace tavaro {

/// How long a take can go on until a disk is too full to save it.
class DiskRoom {
public:
    enum class Use {
        working, // it is recorded there: streams are joined into files of their own before the segments go, so all that
                 // was written is needed once more
        keeping, // it comes there when it is over: all that was written is needed there
    };
    explicit DiskRoom(Use use = Use::working) : use_(use) {}

    struct State {
        double at = 0;             // seconds of recording, pauses left out
        std::uint64_t written = 0; // by the take, in bytes
        std::uint64_t free = 0;    // bytes of the disk
        std::uint64_t size = 0;    // of the disk, in bytes
    };

    void note(State const& state);

    /// At the rate of the last half minute; none before there is one.
    std::optional<double> seconds() const;
    /// Whether the take has to end now.
    bool isUsedUp() const;

private:
    /// Bytes that can be written and still be saved.
    double room() const;
    double rate() const;

    Use use_;
    std::deque<State> states_; // of the last half minute
};

}
