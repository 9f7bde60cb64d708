#include <TavaroCore/Files/FileDescriptor.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <unistd.h>
#include <vector>

namespace tavaro {

namespace {

int flagsOf(FileDescriptor::Opening opening) {
    using enum FileDescriptor::Opening;
    switch (opening) {
    case reading: return O_RDONLY | O_NONBLOCK | O_NOCTTY;
    case folder: return O_RDONLY | O_DIRECTORY;
    case newFile: return O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW;
    case overwriting: return O_RDWR | O_CREAT | O_TRUNC;
    case lockFile: return O_RDWR | O_CREAT | O_NOFOLLOW;
    }
    return O_RDONLY;
}

int flagOf(FileDescriptor::Sharing sharing) { return sharing == FileDescriptor::Sharing::shared ? LOCK_SH : LOCK_EX; }

/// Calls `step(done)`, which moves some bytes on and returns how many, until `count` are done or there are no more.
template<class Step> std::ptrdiff_t repeated(std::size_t count, Step step) {
    std::size_t done = 0;
    while (done < count) {
        auto const more = step(done);
        if (more < 0 && errno == EINTR) continue;
        if (more < 0) return -errno;
        if (more == 0) break;
        done += static_cast<std::size_t>(more);
    }
    return static_cast<std::ptrdiff_t>(done);
}

}

FileDescriptor FileDescriptor::open(std::filesystem::path const& file, Opening opening,
                                    std::filesystem::perms permissions) {
    return FileDescriptor(::open(file.c_str(), flagsOf(opening) | O_CLOEXEC, static_cast<mode_t>(permissions)));
}

FileDescriptor FileDescriptor::nameless(std::filesystem::path const& folder) {
    constexpr mode_t ownerOnly = 0600;
    FileDescriptor file(::open(folder.empty() ? "." : folder.c_str(), O_RDWR | O_TMPFILE | O_CLOEXEC, ownerOnly));
    if (file.isOpen() || (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL)) return file;
    auto name = (folder / ".scratch-XXXXXX").string();
    file = FileDescriptor(::mkostemp(name.data(), O_CLOEXEC));
    if (file.isOpen()) ::unlink(name.c_str());
    return file;
}

void FileDescriptor::close() {
    if (value_ >= 0) ::close(value_);
    value_ = -1;
}

int FileDescriptor::write(std::span<std::byte const> bytes) const {
    while (!bytes.empty()) {
        auto const count = ::write(value_, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return errno;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return 0;
}

std::ptrdiff_t FileDescriptor::read(std::span<std::byte> bytes) const {
    return repeated(bytes.size(),
                    [&](std::size_t done) { return ::read(value_, bytes.data() + done, bytes.size() - done); });
}

std::ptrdiff_t FileDescriptor::readAt(std::int64_t offset, std::span<std::byte> bytes) const {
    return repeated(bytes.size(), [&](std::size_t done) {
        return ::pread(value_, bytes.data() + done, bytes.size() - done, offset + static_cast<std::int64_t>(done));
    });
}

int FileDescriptor::copy(FileDescriptor const& from, CopyWatch const& proceed) const {
    constexpr std::size_t atOnce = std::size_t{64} << 20;
    std::uint64_t copied = 0;
    auto const note = [&](std::ptrdiff_t count) {
        copied += static_cast<std::uint64_t>(count);
        return !proceed || proceed(copied);
    };
    for (ssize_t count = 0; (count = ::copy_file_range(from.get(), nullptr, value_, nullptr, atOnce, 0)) > 0;)
        if (!note(count)) return ECANCELED;
    // Where that stopped early (two file systems, or one that cannot), this finds the rest, or the same failure.
    std::vector<std::byte> piece(std::size_t{1} << 20);
    while (true) {
        auto const count = from.read(piece);
        if (count < 0) return static_cast<int>(-count);
        if (count == 0) return 0;
        if (int const failure = write(std::span(piece).first(static_cast<std::size_t>(count)))) return failure;
        if (!note(count)) return ECANCELED;
    }
}

int FileDescriptor::sync() const { return ::fsync(value_) == 0 ? 0 : errno; }

std::filesystem::path FileDescriptor::folderOf(std::filesystem::path const& file) {
    return file.has_parent_path() ? file.parent_path() : std::filesystem::path(".");
}

void FileDescriptor::syncFolderOf(std::filesystem::path const& file) {
    auto const folder = open(folderOf(file), Opening::folder);
    if (folder.isOpen()) [[maybe_unused]]
        auto const failure = folder.sync();
}

bool FileDescriptor::tryLock(Sharing sharing) const { return ::flock(value_, flagOf(sharing) | LOCK_NB) == 0; }

bool FileDescriptor::lock(Sharing sharing) const {
    int outcome;
    do outcome = ::flock(value_, flagOf(sharing));
    while (outcome != 0 && errno == EINTR);
    return outcome == 0;
}

}
