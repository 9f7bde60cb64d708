#include <TavaroPlatform/Sockets/Private/SocketAddress.h>

#include <TavaroPlatform/Sockets/SocketError.h>

#include <cstring>

namespace tavaro {

SocketAddress::SocketAddress(std::filesystem::path const& path) {
    constexpr std::size_t room = 104; // with the zero at the end; some systems have four more
    static_assert(room <= sizeof address.sun_path);
    auto const& text = path.native();
    if (text.size() >= room) throw SocketError(SocketError::Kind::pathTooLong, "Socket path is too long.");
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, text.c_str(), text.size() + 1);
}

}
