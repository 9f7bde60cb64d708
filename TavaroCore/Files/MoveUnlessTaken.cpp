#include <TavaroCore/Files/MoveUnlessTaken.h>

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroCore/Files/FileError.h>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

/// For disks that know neither an exclusive renaming nor second names (some network ones): the name is taken with
/// something empty first, which a crash can leave.
int claimAndRename(fs::path const& from, fs::path const& to) {
    std::error_code ignored;
    bool const isFolder = fs::is_directory(fs::symlink_status(from, ignored));
    bool const isClaimed =
        isFolder ? ::mkdir(to.c_str(), 0777) == 0 : FileDescriptor::open(to, FileDescriptor::Opening::newFile).isOpen();
    if (!isClaimed) return errno;
    if (::rename(from.c_str(), to.c_str()) == 0) return 0;
    int const failure = errno;
    fs::remove(to, ignored);
    return failure;
}

/// A second name, then without the first.
int linkAndUnlink(fs::path const& from, fs::path const& to) {
    if (::link(from.c_str(), to.c_str()) == 0) return ::unlink(from.c_str()) == 0 ? 0 : errno;
    return errno == EEXIST ? EEXIST : claimAndRename(from, to); // folders have no second names, nor has all of a disk
}

int move(fs::path const& from, fs::path const& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
    return errno == EINVAL || errno == ENOSYS ? linkAndUnlink(from, to) : errno;
}

}

bool moveUnlessTaken(fs::path const& from, fs::path const& to) {
    int const failure = move(from, to);
    if (failure == EEXIST) return false;
    if (failure != 0) throw FileError::writing(to, failure);
    return true;
}

}
