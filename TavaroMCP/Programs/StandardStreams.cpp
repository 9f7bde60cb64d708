#include <TavaroMCP/Programs/StandardStreams.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <poll.h>
#include <unistd.h>

namespace tavaro {

namespace {

constexpr std::size_t mostUnwritten = std::size_t{32} << 20; // then nothing more is read
constexpr std::chrono::milliseconds beatTime(250);
constexpr std::chrono::milliseconds lastWords(500);

}

void StandardStreams::write(std::string_view line) {
    unwritten_.append(line);
    unwritten_ += '\n';
}

void StandardStreams::run(Owner const& owner) {
    while (!isDone(owner)) {
        bool const takesInput = !ended_ && unwritten_.size() - written_ < mostUnwritten;
        // Without wanted events the end of the input is still seen.
        pollfd waiting[] = {{ended_ ? -1 : STDIN_FILENO, takesInput ? short{POLLIN} : short{0}, 0},
                            {unwritten_.empty() ? -1 : STDOUT_FILENO, POLLOUT, 0},
                            {bell_.descriptor(), POLLIN, 0}};
        if (::poll(waiting, std::size(waiting), static_cast<int>(patience(owner).count())) < 0) continue;
        if (waiting[1].revents != 0) writeOutput();
        if (waiting[2].revents != 0) {
            bell_.hush();
            owner.woken();
        }
        if (takesInput && waiting[0].revents != 0)
            readInput(owner);
        else if ((waiting[0].revents & (POLLHUP | POLLERR | POLLNVAL)) != 0)
            ended_ = Clock::now();
        if (owner.isBusy()) owner.beat();
    }
}

bool StandardStreams::isDone(Owner const& owner) const {
    if (!ended_) return false;
    return Clock::now() - *ended_ >= lastWords || (unwritten_.empty() && !owner.isBusy());
}

std::chrono::milliseconds StandardStreams::patience(Owner const& owner) const {
    constexpr std::chrono::milliseconds forever(-1);
    if (!ended_) return owner.isBusy() ? beatTime : forever;
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(lastWords - (Clock::now() - *ended_));
    return std::clamp(left, std::chrono::milliseconds::zero(), beatTime);
}

void StandardStreams::readInput(Owner const& owner) {
    std::array<char, std::size_t{64} << 10> piece;
    auto const count = ::read(STDIN_FILENO, piece.data(), piece.size());
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) return;
    if (count > 0) {
        lines_.feed({piece.data(), static_cast<std::size_t>(count)});
        return deliver(owner);
    }
    ended_ = Clock::now();
    if (!lines_.rest().empty()) {
        lines_.feed("\n");
        deliver(owner);
    }
}

void StandardStreams::deliver(Owner const& owner) {
    while (auto const line = lines_.next()) {
        auto const beginning = lines_.tooLongBeginning();
        beginning.empty() ? owner.receive(*line) : owner.refuse(beginning);
    }
    if (!unwritten_.empty()) writeOutput();
}

/// As much as goes without waiting: a pipe that can be written to takes that many bytes at once.
void StandardStreams::writeOutput() {
    while (written_ < unwritten_.size()) {
        pollfd ready{STDOUT_FILENO, POLLOUT, 0};
        if (::poll(&ready, 1, 0) <= 0) break;
        auto const size = std::min<std::size_t>(unwritten_.size() - written_, PIPE_BUF);
        auto const count = ::write(STDOUT_FILENO, unwritten_.data() + written_, size);
        if (count < 0 && (errno == EINTR || errno == EAGAIN)) break;
        if (count < 0) { // nobody reads any more
            ended_ = Clock::now() - lastWords;
            written_ = unwritten_.size();
            break;
        }
        written_ += static_cast<std::size_t>(count);
    }
    if (written_ < unwritten_.size() / 2) return; // moving the rest forward costs more than it frees
    unwritten_.erase(0, written_);
    written_ = 0;
}

}
