#pragma once

#include <TavaroPlatform/Sockets/Bell.h>
#include <TavaroPlatform/Sockets/LineSplitter.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

/// Lines in and out by the streams that the program was started with. Waiting happens in one place, `run`, so that
/// neither a client that does not read nor a call that takes long keeps the program from ending. The streams stay
/// blocking: they may be shared with other programs.
class StandardStreams {
public:
    struct Owner {
        std::function<void(std::string_view line)> receive;
        std::function<void(std::string_view beginning)> refuse; // a line of more than 16 MiB, which is dropped
        std::function<void()> woken;
        std::function<bool()> isBusy; // then `beat` is called every quarter of a second
        std::function<void()> beat;
    };

    /// The thread of `run`. Goes out as the client reads.
    void write(std::string_view line);
    /// Any thread. Soon after, `woken` is called.
    void wake() const { bell_.ring(); }

    /// Until the input has ended, and for half a second more where the owner is busy or the client still reads.
    void run(Owner const& owner);

private:
    static constexpr std::size_t longestLine = std::size_t{16} << 20;

    using Clock = std::chrono::steady_clock;

    bool isDone(Owner const& owner) const;
    std::chrono::milliseconds patience(Owner const& owner) const;
    void readInput(Owner const& owner);
    void deliver(Owner const& owner);
    void writeOutput();

    Bell bell_;
    LineSplitter lines_{longestLine};
    std::string unwritten_;
    std::size_t written_ = 0; // of `unwritten_`
    std::optional<Clock::time_point> ended_;
};

}
