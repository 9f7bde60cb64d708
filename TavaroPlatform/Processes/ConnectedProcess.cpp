#include <TavaroPlatform/Processes/ConnectedProcess.h>

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroPlatform/Processes/Private/ProgramStart.h>

#include <array>
#include <chrono>
#include <csignal>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace tavaro {

std::optional<ConnectedProcess> ConnectedProcess::start(std::vector<std::string> const& command,
                                                        std::vector<std::string> const& more) {
    std::array<int, 2> ends{-1, -1};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) return std::nullopt;
    FileDescriptor ours(ends[0]);
    FileDescriptor const its(ends[1]);
    ProgramStart program(ProgramStart::Group::ofItsOwn);
    program.takeOver(its.get(), STDIN_FILENO);
    program.takeOver(its.get(), STDOUT_FILENO);
    auto const process = program.start(command, environmentWith(more).data());
    if (!process) return std::nullopt;
    return ConnectedProcess(*process, UnixSocket(std::move(ours)));
}

ConnectedProcess::ConnectedProcess(ConnectedProcess&& other) noexcept
    : process_(std::exchange(other.process_, 0))
    , socket_(std::move(other.socket_)) {}

ConnectedProcess::~ConnectedProcess() {
    if (process_ == 0) return;
    constexpr std::chrono::milliseconds step(5), patience(2000);
    socket_.shutDown();
    auto const deadline = std::chrono::steady_clock::now() + patience;
    while (!hasEnded()) {
        if (std::chrono::steady_clock::now() > deadline) ::kill(process_, SIGKILL);
        std::this_thread::sleep_for(step);
    }
}

void ConnectedProcess::kill() const {
    if (process_ > 0) ::kill(-process_, SIGKILL);
}

bool ConnectedProcess::hasEnded() const { return ::waitpid(process_, nullptr, WNOHANG) != 0; }

}
