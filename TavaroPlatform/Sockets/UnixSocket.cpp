#include <TavaroPlatform/Sockets/UnixSocket.h>

#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroPlatform/Sockets/Private/SocketAddress.h>
#include <TavaroPlatform/Sockets/SocketError.h>

#include <algorithm>
#include <cerrno>
#include <fmt/format.h>
#include <poll.h>
#include <thread>
#include <unistd.h>

namespace tavaro {

namespace {

/// Waits until the descriptor is ready for one of the events; 0 where that takes longer.
short eventsOf(int descriptor, short wanted, UnixSocket::Patience patience) {
    pollfd waiting{descriptor, wanted, 0};
    int count;
    do count = ::poll(&waiting, 1, static_cast<int>(patience.count()));
    while (count < 0 && errno == EINTR);
    return count > 0 ? waiting.revents : short{0};
}

SocketError unreachable(std::filesystem::path const& path, std::string const& reason) {
    return {SocketError::Kind::refused, fmt::format("Could not connect to “{}”: {}.", path.string(), reason)};
}

/// Connects, waiting a little for a listener that has too many waiting already. 0, or what stopped it.
int connectPatiently(int descriptor, SocketAddress const& address) {
    constexpr std::chrono::milliseconds step(10);
    constexpr int tries = 200;
    for (int i = 0; i < tries; ++i) {
        if (::connect(descriptor, address.get(), SocketAddress::size) == 0) return 0;
        if (errno != EAGAIN && errno != EINTR) return errno;
        std::this_thread::sleep_for(step);
    }
    return EAGAIN;
}

}

std::optional<UnixSocket> UnixSocket::connect(std::filesystem::path const& path) {
    SocketAddress const address(path);
    FileDescriptor descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!descriptor.isOpen()) throw unreachable(path, systemReason(errno));
    int const failure = connectPatiently(descriptor.get(), address);
    if (failure == ENOENT || failure == ECONNREFUSED || failure == ENOTDIR) return std::nullopt;
    if (failure != 0) throw unreachable(path, systemReason(failure));
    UnixSocket socket(std::move(descriptor));
    if (!socket.isOfSameUser()) throw unreachable(path, "it belongs to another user");
    return socket;
}

UnixSocket::Receipt UnixSocket::receive(std::span<char> room, Patience patience) const {
    while (true) {
        auto const count = ::recv(descriptor_.get(), room.data(), room.size(), MSG_DONTWAIT);
        if (count > 0) return {Received::bytes, static_cast<std::size_t>(count)};
        bool const mayCome = count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR);
        if (!mayCome) return {Received::end};
        if (eventsOf(descriptor_.get(), POLLIN, patience) == 0) return {Received::nothing};
    }
}

bool UnixSocket::awaitInput(Patience patience) const { return eventsOf(descriptor_.get(), POLLIN, patience) != 0; }

bool UnixSocket::sendAll(std::string_view bytes, Patience patience) const {
    while (!bytes.empty()) {
        auto const count = sendNow(bytes);
        if (!count) return false;
        bytes.remove_prefix(*count);
        if (!bytes.empty() && eventsOf(descriptor_.get(), POLLOUT, patience) == 0) return false;
    }
    return true;
}

std::optional<std::size_t> UnixSocket::sendNow(std::string_view bytes) const {
    auto const count = ::send(descriptor_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR) return std::size_t{0};
    return std::nullopt;
}

bool UnixSocket::isConnected() const {
    return (eventsOf(descriptor_.get(), 0, Patience(0)) & (POLLHUP | POLLERR)) == 0;
}

void UnixSocket::endInput() const { ::shutdown(descriptor_.get(), SHUT_RD); }

void UnixSocket::shutDown() const { ::shutdown(descriptor_.get(), SHUT_RDWR); }

bool UnixSocket::isOfSameUser() const {
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(descriptor_.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == ::geteuid();
}

}
