#include <TavaroCore/Files/FolderLock.h>

#include <cerrno>

namespace tavaro {

FolderLock::FolderLock(std::filesystem::path const& folder)
    : folder_(FileDescriptor::open(folder.empty() ? "." : folder, FileDescriptor::Opening::folder)) {
    if (folder_.isOpen()) folder_.lock(FileDescriptor::Sharing::exclusive);
}

std::optional<FolderLock> FolderLock::unlessTaken(std::filesystem::path const& folder) {
    auto locked = FileDescriptor::open(folder.empty() ? "." : folder, FileDescriptor::Opening::folder);
    bool const isTaken = locked.isOpen() && !locked.tryLock(FileDescriptor::Sharing::exclusive) && errno == EWOULDBLOCK;
    return isTaken ? std::nullopt : std::optional(FolderLock(std::move(locked)));
}

std::optional<FolderLock> FolderLock::ifFree(std::filesystem::path const& folder) {
    auto locked = FileDescriptor::open(folder.empty() ? "." : folder, FileDescriptor::Opening::folder);
    if (!locked.isOpen() || !locked.tryLock(FileDescriptor::Sharing::exclusive)) return std::nullopt;
    return FolderLock(std::move(locked));
}

}
