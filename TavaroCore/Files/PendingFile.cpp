#include <TavaroCore/Files/PendingFile.h>

#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Files/MoveUnlessTaken.h>
#include <TavaroCore/Files/Private/HiddenNeighbour.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

constexpr mode_t permissionBits = 0777;

/// The plain file that has the name. A folder cannot be replaced by a file, and is refused before the work begins; a
/// link is replaced, its own permissions mean nothing.
std::optional<struct stat> replacedBy(fs::path const& file) {
    struct stat about {};
    if (::lstat(file.c_str(), &about) != 0) return std::nullopt;
    std::error_code ignored;
    if (S_ISDIR(about.st_mode) || (S_ISLNK(about.st_mode) && fs::is_directory(file, ignored)))
        throw FileError::writing(file, EISDIR);
    if (!S_ISREG(about.st_mode)) return std::nullopt;
    return about;
}

/// Who may not give files away (everybody but root) keeps what he makes.
void passOn(struct stat const& before, FileDescriptor const& file) {
    bool const isOwn = before.st_uid == ::geteuid() && before.st_gid == ::getegid();
    [[maybe_unused]] bool const isOwnersAgain = isOwn || ::fchown(file.get(), before.st_uid, before.st_gid) == 0;
    ::fchmod(file.get(), before.st_mode & permissionBits);
}

}

PendingFile::PendingFile(fs::path file, fs::perms permissions) : file_(std::move(file)) {
    auto const before = replacedBy(file_);
    make(before ? static_cast<fs::perms>(before->st_mode & permissionBits) : permissions);
    if (before) passOn(*before, descriptor_);
}

PendingFile::PendingFile(PendingFile&& other) noexcept
    : file_(std::move(other.file_))
    , path_(std::exchange(other.path_, {}))
    , descriptor_(std::move(other.descriptor_))
    , isFlushed_(other.isFlushed_) {}

PendingFile::~PendingFile() {
    if (!path_.empty()) ::unlink(path_.c_str());
}

void PendingFile::make(fs::perms permissions) {
    hidden::removeAbandoned(file_);
    do {
        auto const path = hidden::neighbour(file_);
        descriptor_ = FileDescriptor::open(path, FileDescriptor::Opening::newFile, permissions & fs::perms::all);
        if (!descriptor_.isOpen() && errno == EEXIST) continue; // a link planted there, or a name of another machine
        if (!descriptor_.isOpen()) throw FileError::writing(file_, errno);
        path_ = path;
    } while (path_.empty() || !hidden::hold(descriptor_, path_));
}

PendingFile PendingFile::twin(fs::path const& existing, fs::path const& file) {
    hidden::removeAbandoned(file);
    PendingFile twin;
    twin.file_ = file;
    do {
        auto const path = hidden::neighbour(file);
        if (::linkat(AT_FDCWD, existing.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0) {
            twin.path_ = path;
            twin.descriptor_ = FileDescriptor::open(path, FileDescriptor::Opening::reading);
        } else if (errno != EEXIST) {
            PendingFile copy(file, fs::status(existing).permissions());
            copy.copy(existing);
            return copy;
        }
    } while (twin.path_.empty() || !hidden::hold(twin.descriptor_, twin.path_));
    twin.isFlushed_ = true; // as `existing` is
    return twin;
}

int PendingFile::write(std::span<std::byte const> bytes) {
    isFlushed_ = false;
    return descriptor_.write(bytes);
}

void PendingFile::append(std::string_view bytes) {
    if (int const failure = write(std::as_bytes(std::span(bytes)))) throw FileError::writing(file_, failure);
}

void PendingFile::copy(fs::path const& from, FileDescriptor::CopyWatch const& proceed) {
    auto const source = FileDescriptor::open(from, FileDescriptor::Opening::reading);
    if (!source.isOpen()) throw FileError::reading(from, errno);
    isFlushed_ = false;
    if (int const failure = descriptor_.copy(source, proceed)) throw FileError::writing(file_, failure);
}

/// Without moving the bytes through this process where the file system can.
bool PendingFile::copyRange(FileDescriptor const& from, std::int64_t begin, std::int64_t end) {
    constexpr std::int64_t mostAtOnce = 1 << 20;
    isFlushed_ = false;
    auto const left = [&] { return static_cast<std::size_t>(end - begin); };
    while (begin<end&& ::copy_file_range(from.get(), &begin, descriptor_.get(), nullptr, left(), 0)> 0) {
    }
    std::vector<std::byte> piece(std::min<std::size_t>(left(), mostAtOnce));
    while (begin < end) {
        auto const count = from.readAt(begin, std::span(piece).first(std::min(left(), piece.size())));
        if (count < 0) throw FileError::reading(file_, static_cast<int>(-count));
        if (count == 0) return false;
        append({reinterpret_cast<char const*>(piece.data()), static_cast<std::size_t>(count)});
        begin += count;
    }
    return true;
}

void PendingFile::flush() {
    if (isFlushed_) return;
    if (int const failure = descriptor_.sync()) throw FileError::writing(file_, failure);
    isFlushed_ = true;
}

void PendingFile::commit(FolderFlush flush) {
    this->flush();
    if (::rename(path_.c_str(), file_.c_str()) != 0) throw FileError::writing(file_, errno);
    // Where both names already are of one file, renaming does nothing and leaves the hidden one.
    ::unlink(path_.c_str());
    finish(flush);
}

void PendingFile::commit(IfTaken ifTaken) {
    if (ifTaken == IfTaken::replace) return commit();
    if (!commitUnlessTaken()) throw FileError::writing(file_, EEXIST);
}

bool PendingFile::commitUnlessTaken(fs::path const& name) {
    flush();
    if (!moveUnlessTaken(path_, name)) return false;
    finish(FolderFlush::now);
    return true;
}

void PendingFile::finish(FolderFlush flush) {
    path_.clear();
    descriptor_.close();
    if (flush == FolderFlush::now) FileDescriptor::syncFolderOf(file_);
}

bool PendingFile::isPendingName(std::string_view name) { return hidden::isNeighbourName(name); }

}
