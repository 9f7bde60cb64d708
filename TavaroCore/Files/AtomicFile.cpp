#include <TavaroCore/Files/AtomicFile.h>

#include <TavaroCore/Files/FolderLock.h>
#include <TavaroCore/Files/PlainFile.h>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace tavaro {

namespace {

constexpr auto ownerWrites = std::filesystem::perms(0644);

}

void writeFileAtomically(std::filesystem::path const& file, std::string_view bytes, PendingFile::IfTaken ifTaken) {
    PendingFile pending(file, ownerWrites);
    pending.append(bytes);
    pending.commit(ifTaken);
}

void replaceFileKeepingBackup(std::filesystem::path const& file, std::filesystem::path const& backup,
                              std::string_view bytes) {
    replaceFileKeepingBackup(file, backup, [&](PendingFile& pending) {
        pending.append(bytes);
        return true;
    });
}

bool replaceFileKeepingBackup(std::filesystem::path const& file, std::filesystem::path const& backup,
                              std::function<bool(PendingFile&)> const& write) {
    FolderLock const lock(FileDescriptor::folderOf(file)); // of two savers, the later one keeps what the other saved
    PendingFile pending(file, ownerWrites);
    if (!write(pending)) return false;
    pending.flush(); // before the backup changes: a full disk leaves both as they were
    if (access(file.c_str(), F_OK) == 0) PendingFile::twin(file, backup).commit(PendingFile::FolderFlush::withNext);
    pending.commit();
    return true;
}

void exchangeFiles(std::filesystem::path const& a, std::filesystem::path const& b) {
    FolderLock const lock(FileDescriptor::folderOf(a));
    if (renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE) == 0) {
        FileDescriptor::syncFolderOf(a);
        return;
    }
    if (errno != EINVAL && errno != ENOSYS) throw FileError::writing(a, errno);
    auto oldA = PendingFile::twin(a, b);
    PendingFile::twin(b, a).commit(PendingFile::FolderFlush::withNext);
    oldA.commit();
}

std::optional<std::string> readWholeFile(std::filesystem::path const& file, std::uint64_t maxBytes) {
    auto const in = PlainFile::open(file, maxBytes);
    if (!in) return std::nullopt;
    std::string bytes(in->size, '\0');
    auto const count = in->descriptor.read(std::as_writable_bytes(std::span(bytes)));
    if (count < 0) throw FileError::reading(file, static_cast<int>(-count));
    bytes.resize(static_cast<std::size_t>(count));
    return bytes;
}

}
