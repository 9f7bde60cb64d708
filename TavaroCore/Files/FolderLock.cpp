#include <TavaroCore/Files/FolderLock.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace tavaro {

FolderLock::FolderLock(std::filesystem::path const& folder)
    : descriptor_(open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    while (descriptor_ >= 0 && flock(descriptor_, LOCK_EX) != 0 && errno == EINTR) {
    }
}

FolderLock::~FolderLock() {
    if (descriptor_ >= 0) close(descriptor_);
}

}
