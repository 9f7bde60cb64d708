#pragma once

#include <filesystem>

#include <sys/socket.h>
#include <sys/un.h>

namespace tavaro {

/// The address of a socket in the file system. Throws `SocketError` for a path that does not fit.
struct SocketAddress {
    explicit SocketAddress(std::filesystem::path const& path);

    sockaddr const* get() const { return reinterpret_cast<sockaddr const*>(&address); }
    static constexpr socklen_t size = sizeof(sockaddr_un);

    sockaddr_un address{};
};

}
