#pragma once

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroPlatform/Sockets/UnixSocket.h>

#include <filesystem>
#include <optional>
#include <sys/types.h>

namespace tavaro {

/// A socket in the file system that only programs of this user reach: its folder and the socket itself are open to
/// nobody else, and whoever comes all the same is sent away without a word.
class UnixSocketListener {
public:
    /// Makes the folder where it is missing. A socket that was left there by a program that is gone is replaced; one
    /// where somebody listens, and anything that is no socket, never. Throws `SocketError`.
    explicit UnixSocketListener(std::filesystem::path path);
    /// Removes the socket, unless another has taken its place.
    ~UnixSocketListener();
    UnixSocketListener(UnixSocketListener const&) = delete;
    UnixSocketListener& operator=(UnixSocketListener const&) = delete;

    /// Readable when somebody waits.
    int descriptor() const { return descriptor_.get(); }
    /// Who waited first; none where nobody does any more, or another user did.
    std::optional<UnixSocket> accept() const;

private:
    bool isOurs() const;

    std::filesystem::path path_;
    FileDescriptor descriptor_;
    dev_t device_ = 0; // where the socket lies, and which it is there
    ino_t number_ = 0;
};

}
