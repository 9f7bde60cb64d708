#include <Tavaro/Commands/ProgressLine.h>

#include <TavaroCore/Values/Timecode.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <unistd.h>
#include <utility>

namespace tavaro {

namespace {

using namespace std::chrono_literals;

constexpr int barWidth = 30;

std::string bar(double share) {
    auto const filled = static_cast<int>(std::lround(share * barWidth));
    std::string result;
    for (int i = 0; i < barWidth; ++i) result += i < filled ? "█" : "░";
    return result;
}

}

ProgressLine::ProgressLine(std::string title, Output output)
    : title_(std::move(title))
    , isSilent_(output == Output::silent)
    , isTerminal_(isatty(STDERR_FILENO) == 1) {}

ProgressLine::~ProgressLine() {
    if (hasShown_ && isTerminal_) fmt::print(stderr, "\n");
}

bool ProgressLine::isDue(bool isLast) {
    auto const now = Clock::now();
    if (isSilent_ || (now < nextShow_ && !isLast)) return false;
    nextShow_ = now + (isTerminal_ ? 100ms : 2000ms);
    return true;
}

void ProgressLine::show(std::string const& line) {
    if (isTerminal_)
        fmt::print(stderr, "\r{}\x1b[K", line);
    else
        fmt::print(stderr, "{}\n", line);
    std::fflush(stderr);
    hasShown_ = true;
}

void ProgressLine::frames(std::int64_t done, std::int64_t total) {
    bool const isLast = done == total && !std::exchange(isFinished_, done == total);
    if (total <= 0 || !isDue(isLast)) return;
    double const seconds = std::chrono::duration<double>(Clock::now() - started_).count();
    double const rate = seconds > 0 ? static_cast<double>(done) / seconds : 0;
    double const share = static_cast<double>(done) / static_cast<double>(total);
    auto line = fmt::format("{} {}{:3.0f} %  {} of {} frames", title_, isTerminal_ ? bar(share) + " " : "", share * 100,
                            done, total);
    if (rate > 0) {
        double const left = static_cast<double>(total - done) / rate;
        line += fmt::format("  {:.0f} frames/s  {} left", rate, Timecode::format(std::ceil(left)));
    }
    show(line);
}

void ProgressLine::text(std::string_view state) {
    if (isDue(false)) show(fmt::format("{} {}", title_, state));
}

}
