#include <TavaroPlatform/Processes/ProgramRun.h>

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroPlatform/Processes/Private/ProgramStart.h>
#include <TavaroPlatform/Sockets/Bell.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace tavaro {

namespace {

using Clock = std::chrono::steady_clock;
using End = ProgramAnswer::End;

constexpr std::size_t mostOfErrors = 4096;

struct Ends {
    FileDescriptor ours, its;
};

/// A socket, since writing to a program that reads no more must not end this one.
Ends inputEnds() {
    std::array<int, 2> ends{-1, -1};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) return {};
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

Ends outputEnds() {
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) return {};
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

/// A program that runs, and what it has said so far.
class Conversation {
public:
    Conversation(ProgramRun const& run, std::stop_token const& stop) : run_(run), stop_(stop) {}

    ProgramAnswer take() {
        if (!start()) return {.end = End::notStarted};
        std::stop_callback const ring(stop_, [this] { stopped_.ring(); });
        auto const deadline = Clock::now() + run_.patience;
        while (!isOver()) {
            if (stop_.stop_requested()) return killed(End::cancelled);
            auto const left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
            if (left.count() <= 0) return killed(End::outOfTime);
            wait(left);
            if (answer_.out.size() > run_.mostOutput) return killed(End::tooMuch);
        }
        return ended(deadline);
    }

private:
    bool start() {
        auto in = inputEnds(), out = outputEnds(), error = outputEnds();
        if (!in.its.isOpen() || !out.its.isOpen() || !error.its.isOpen()) return false;
        ProgramStart program(ProgramStart::Group::session);
        program.takeOver(in.its.get(), STDIN_FILENO);
        program.takeOver(out.its.get(), STDOUT_FILENO);
        program.takeOver(error.its.get(), STDERR_FILENO);
        auto environment = pointersTo(run_.more);
        environment.pop_back();
        for (auto* const* variable = environ; *variable; ++variable) environment.push_back(*variable);
        environment.push_back(nullptr);
        auto const process = program.start(run_.command, environment.data());
        if (!process) return false;
        process_ = *process;
        in_ = std::move(in.ours), out_ = std::move(out.ours), error_ = std::move(error.ours);
        return true;
    }

    bool isOver() const { return !out_.isOpen() && !error_.isOpen(); }

    void wait(std::chrono::milliseconds atMost) {
        if (in_.isOpen() && written_ == run_.input.size()) in_.close();
        std::array<pollfd, 4> waited{{{in_.isOpen() ? in_.get() : -1, POLLOUT, 0},
                                      {out_.isOpen() ? out_.get() : -1, POLLIN, 0},
                                      {error_.isOpen() ? error_.get() : -1, POLLIN, 0},
                                      {stopped_.descriptor(), POLLIN, 0}}};
        auto const longest = std::min<std::int64_t>(atMost.count(), 60'000);
        if (::poll(waited.data(), waited.size(), static_cast<int>(longest)) <= 0) return;
        if (waited[0].revents != 0) write();
        if (waited[1].revents != 0) read(out_, answer_.out);
        if (waited[2].revents != 0) read(error_, answer_.error);
        if (answer_.error.size() > mostOfErrors) answer_.error.erase(0, answer_.error.size() - mostOfErrors);
    }

    void write() {
        auto const left = std::string_view(run_.input).substr(written_);
        auto const count = ::send(in_.get(), left.data(), left.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count >= 0)
            written_ += static_cast<std::size_t>(count);
        else if (errno != EAGAIN && errno != EINTR)
            in_.close(); // it reads no more
    }

    static void read(FileDescriptor& from, std::string& to) {
        std::array<char, 1 << 16> piece;
        auto const count = ::read(from.get(), piece.data(), piece.size());
        if (count > 0)
            to.append(piece.data(), static_cast<std::size_t>(count));
        else if (count == 0 || errno != EINTR)
            from.close();
    }

    ProgramAnswer killed(End end) {
        ::kill(-process_, SIGKILL);
        ::kill(process_, SIGKILL); // it may not have made its session yet
        ::waitpid(process_, nullptr, 0);
        answer_.end = end;
        return std::move(answer_);
    }

    /// It says no more, but may run on.
    ProgramAnswer ended(Clock::time_point deadline) {
        int status = 0;
        in_.close();
        while (::waitpid(process_, &status, WNOHANG) == 0) {
            if (stop_.stop_requested()) return killed(End::cancelled);
            if (Clock::now() > deadline) return killed(End::outOfTime);
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        answer_.end = WIFEXITED(status) ? End::exited : End::broken;
        answer_.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        return std::move(answer_);
    }

    ProgramRun const& run_;
    std::stop_token const& stop_;
    Bell const stopped_;
    pid_t process_ = 0;
    FileDescriptor in_, out_, error_;
    std::size_t written_ = 0;
    ProgramAnswer answer_;
};

}

ProgramAnswer runProgram(ProgramRun const& run, std::stop_token const& stop) { return Conversation(run, stop).take(); }

}
