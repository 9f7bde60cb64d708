#pragma once

#include <TavaroPlatform/Sockets/UnixSocket.h>

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace tavaro {

/// A program that is talked to over its standard input and output. What it says on standard error is this program's.
/// Signals of the terminal do not reach it; it ends with this object, at the latest two seconds after its input.
class ConnectedProcess {
public:
    /// The first word is the program's file. It has this program's variables and `more` ("NAME=value"), which go
    /// before. None where it cannot be started.
    static std::optional<ConnectedProcess> start(std::vector<std::string> const& command,
                                                 std::vector<std::string> const& more = {});
    ConnectedProcess(ConnectedProcess&& other) noexcept;
    ConnectedProcess& operator=(ConnectedProcess&&) = delete;
    ~ConnectedProcess();

    UnixSocket const& socket() const { return socket_; }
    /// Ends it at once, with all that it has started.
    void kill() const;

private:
    ConnectedProcess(pid_t process, UnixSocket socket) : process_(process), socket_(std::move(socket)) {}
    bool hasEnded() const;

    pid_t process_; // 0 once moved from
    UnixSocket socket_;
};

}
