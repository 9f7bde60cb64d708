#pragma once

#include <Tavaro/Commands/ProgressText.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace tavaro {

/// The state of long work on standard error: a bar that redraws itself on a terminal, a plain line every few seconds
/// elsewhere. Calls may come as often as they like.
class ProgressLine {
public:
    enum class Output { automatic, silent };

    explicit ProgressLine(std::string title, Output output = Output::automatic);
    ~ProgressLine();
    ProgressLine(ProgressLine const&) = delete;
    ProgressLine& operator=(ProgressLine const&) = delete;

    /// A new part of the work begins, under that title. The same title again changes nothing.
    void stage(std::string_view title);
    /// Work of a known length: a bar with frames a second and the time left.
    void frames(std::int64_t done, std::int64_t total);
    /// Work without an end in sight: any text.
    void text(std::string_view state);
    /// The last line, which stays.
    void finish(std::string const& summary);

private:
    using Clock = std::chrono::steady_clock;
    double seconds() const;
    bool isDue(bool isLast);
    void show(std::string const& line);

    std::string title_;
    bool isSilent_;
    bool isTerminal_;
    bool hasShown_ = false;
    bool isFinished_ = false;
    Pace pace_;
    Clock::time_point started_ = Clock::now();
    Clock::time_point nextShow_ = started_;
};

}
