#include <TavaroPlatform/Sockets/UnixSocketListener.h>

#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroCore/Files/FolderLock.h>
#include <TavaroPlatform/Sockets/Private/SocketAddress.h>
#include <TavaroPlatform/Sockets/SocketError.h>

#include <cerrno>
#include <fmt/format.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace tavaro {

namespace {

constexpr mode_t onlyUser = 0700;
constexpr mode_t onlyUserWithoutRunning = 0600;
constexpr mode_t others = 0077;

[[noreturn]] void fail(std::filesystem::path const& path, std::string const& reason,
                       SocketError::Kind kind = SocketError::Kind::refused) {
    throw SocketError(kind, fmt::format("Could not listen at “{}”: {}.", path.string(), reason));
}

/// Makes the folder, and closes it to others.
void ensurePrivateFolder(std::filesystem::path const& folder) {
    std::error_code code;
    std::filesystem::create_directories(folder.parent_path(), code); // told of by what follows
    if (::mkdir(folder.c_str(), onlyUser) != 0 && errno != EEXIST) fail(folder, systemReason(errno));
    auto const opened = FileDescriptor::open(folder, FileDescriptor::Opening::folder);
    struct stat status {};
    if (!opened.isOpen() || ::fstat(opened.get(), &status) != 0) fail(folder, systemReason(errno));
    if (status.st_uid != ::geteuid()) fail(folder, "the folder belongs to another user");
    if ((status.st_mode & others) != 0 && ::fchmod(opened.get(), onlyUser) != 0) fail(folder, systemReason(errno));
}

/// Removes a socket where nobody listens any more.
void removeDead(std::filesystem::path const& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) return;
    if (!S_ISSOCK(status.st_mode)) fail(path, "something that is no socket has that name");
    if (UnixSocket::connect(path)) fail(path, "another program listens there", SocketError::Kind::isInUse);
    if (::unlink(path.c_str()) != 0) fail(path, systemReason(errno));
}

FileDescriptor listeningAt(std::filesystem::path const& path) {
    SocketAddress const address(path);
    FileDescriptor descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!descriptor.isOpen()) fail(path, systemReason(errno));
    // The file gets the permissions that the socket has when it is bound, so there is no moment with others.
    bool const isListening = ::fchmod(descriptor.get(), onlyUserWithoutRunning) == 0 &&
                             ::bind(descriptor.get(), address.get(), SocketAddress::size) == 0 &&
                             ::listen(descriptor.get(), SOMAXCONN) == 0;
    if (!isListening) fail(path, systemReason(errno));
    return descriptor;
}

}

UnixSocketListener::UnixSocketListener(std::filesystem::path path) : path_(std::move(path)) {
    [[maybe_unused]] SocketAddress const fitting(path_);
    auto const folder = FileDescriptor::folderOf(path_);
    ensurePrivateFolder(folder);
    FolderLock const lock(folder); // of two that find a dead socket, one replaces it and the other finds that one alive
    removeDead(path_);
    descriptor_ = listeningAt(path_);
    struct stat status {};
    if (::lstat(path_.c_str(), &status) != 0) fail(path_, systemReason(errno));
    device_ = status.st_dev;
    number_ = status.st_ino;
}

UnixSocketListener::~UnixSocketListener() {
    FolderLock const lock(FileDescriptor::folderOf(path_));
    if (isOurs()) ::unlink(path_.c_str());
}

bool UnixSocketListener::isOurs() const {
    struct stat status {};
    return ::lstat(path_.c_str(), &status) == 0 && status.st_dev == device_ && status.st_ino == number_;
}

std::optional<UnixSocket> UnixSocketListener::accept() const {
    FileDescriptor descriptor(::accept4(descriptor_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!descriptor.isOpen()) return std::nullopt;
    UnixSocket socket(std::move(descriptor));
    if (!socket.isOfSameUser()) return std::nullopt;
    return socket;
}

}
