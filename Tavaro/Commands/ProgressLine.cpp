#include <Tavaro/Commands/ProgressLine.h>

#include <Tavaro/Commands/Terminal.h>

#include <fmt/format.h>

#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace tavaro {

namespace {

using namespace std::chrono_literals;

constexpr double secondsUntilRate = 0.5; // before that, the start-up is all that a rate would tell

/// Of the terminal, less the last one, where writing may break the line.
int columns() {
    winsize size{};
    bool const isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return (isKnown ? size.ws_col : 80) - 1;
}

}

ProgressLine::ProgressLine(std::string title, Output output)
    : title_(std::move(title))
    , isSilent_(output == Output::silent)
    , isTerminal_(isatty(STDERR_FILENO) == 1) {}

ProgressLine::~ProgressLine() {
    if (hasShown_ && isTerminal_) terminal::tell("\n");
}

double ProgressLine::seconds() const { return std::chrono::duration<double>(Clock::now() - started_).count(); }

bool ProgressLine::isDue(bool isLast) {
    auto const now = Clock::now();
    if (isSilent_ || (now < nextShow_ && !isLast)) return false;
    nextShow_ = now + (isTerminal_ ? 100ms : 2000ms);
    return true;
}

void ProgressLine::show(std::string const& line) {
    if (isTerminal_)
        terminal::tell("\r{}\x1b[K", line);
    else
        terminal::tell("{}\n", line);
    std::fflush(stderr);
    hasShown_ = true;
}

void ProgressLine::stage(std::string_view title) {
    if (title == title_) return;
    title_ = title;
    isFinished_ = false;
    pace_ = {};
    started_ = nextShow_ = Clock::now();
    if (isTerminal_ && !isSilent_) show(fmt::format("{} …", title_));
}

void ProgressLine::frames(std::int64_t done, std::int64_t total) {
    bool const isLast = done == total && !std::exchange(isFinished_, done == total);
    if (total <= 0) return;
    pace_.note(seconds(), done);
    if (!isDue(isLast)) return;
    ProgressState const state{title_, done, total, seconds() >= secondsUntilRate || isLast ? pace_.rate() : 0};
    show(isTerminal_ ? progressBar(state, columns()) : progressText(state));
}

void ProgressLine::text(std::string_view state) {
    if (isDue(false)) show(fmt::format("{} {}", title_, state));
}

void ProgressLine::finish(std::string const& summary) {
    if (!isSilent_) show(summary);
}

}
