#include <Tavaro/Commands/ProgressText.h>

#include <TavaroCore/Values/Timecode.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace tavaro {

namespace {

constexpr double memorySeconds = 5;
constexpr int shortestBar = 10;
constexpr int longestBar = 40;

double share(ProgressState const& state) {
    return std::clamp(static_cast<double>(state.done) / static_cast<double>(std::max<std::int64_t>(state.total, 1)),
                      0.0, 1.0);
}

/// Longer waits are told more coarsely, so the number does not flicker.
std::string timeLeft(ProgressState const& state) {
    double const seconds = static_cast<double>(state.total - state.done) / state.rate;
    double const step = seconds > 300 ? 30 : seconds > 60 ? 5 : 1;
    return Timecode::format(std::ceil(seconds / step) * step) + " left";
}

/// What stands behind the percentage, the most important first. Each keeps its width while the work goes on, so that
/// nothing beside it moves.
std::vector<std::string> details(ProgressState const& state) {
    bool const isUnderWay = state.rate > 0 && state.done < state.total;
    auto const total = std::to_string(state.total);
    return {
        fmt::format("{:>12}", isUnderWay ? timeLeft(state) : ""),
        fmt::format("{:>13}",
                    state.rate > 0 ? fmt::format("{:.{}f} frames/s", state.rate, state.rate < 9.95 ? 1 : 0) : ""),
        fmt::format("{:>{}} of {} frames", state.done, total.size(), total),
    };
}

std::string joined(std::vector<std::string> const& parts, std::size_t count) {
    std::string text;
    for (std::size_t i = count; i-- > 0;) text += "  " + parts[i];
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

/// Characters, not bytes.
int width(std::string_view text) {
    return static_cast<int>(std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

std::string bar(double share, int cells) {
    auto const filled = static_cast<int>(std::lround(share * cells));
    std::string result;
    for (int i = 0; i < cells; ++i) result += i < filled ? "█" : "░";
    return result;
}

}

void Pace::note(double seconds, std::int64_t done) {
    if (!std::exchange(hasBegun_, true)) {
        seconds_ = seconds;
        done_ = done;
        return;
    }
    double const passed = seconds - seconds_;
    if (passed <= 0) return;
    double const kept = std::exp(-passed / memorySeconds);
    weightedDone_ = weightedDone_ * kept + static_cast<double>(done - done_);
    weightedSeconds_ = weightedSeconds_ * kept + passed;
    seconds_ = seconds;
    done_ = done;
}

double Pace::rate() const { return weightedSeconds_ > 0 ? weightedDone_ / weightedSeconds_ : 0; }

std::string progressText(ProgressState const& state) {
    auto const parts = details(state);
    return fmt::format("{} {:3.0f} %{}", state.title, 100 * share(state), joined(parts, parts.size()));
}

std::string progressBar(ProgressState const& state, int columns) {
    auto const percent = fmt::format("{:3.0f} %", 100 * share(state));
    auto const parts = details(state);
    for (auto count = parts.size() + 1; count-- > 0;) {
        int room = columns - width(state.title) - width(percent) - 2;
        for (std::size_t i = 0; i < count; ++i) room -= 2 + width(parts[i]);
        if (room >= shortestBar)
            return fmt::format("{} {} {}{}", state.title, bar(share(state), std::min(room, longestBar)), percent,
                               joined(parts, count));
    }
    return width(percent) <= columns ? percent : "";
}

}
