#include <TavaroCapture/Recovery/Private/WorkingFolderClaim.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

namespace tavaro {

std::optional<WorkingFolderClaim> WorkingFolderClaim::take(std::filesystem::path const& directory) {
    auto const path = directory / ".claim";
    int const file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (file < 0) return std::nullopt;
    // The lock belongs to this opening of the file, so it also keeps out other threads, and the kernel lifts it when
    // the process dies.
    if (flock(file, LOCK_EX | LOCK_NB) != 0) {
        close(file);
        return std::nullopt;
    }
    return WorkingFolderClaim(file);
}

WorkingFolderClaim::WorkingFolderClaim(WorkingFolderClaim&& other) noexcept : file_(std::exchange(other.file_, -1)) {}

WorkingFolderClaim& WorkingFolderClaim::operator=(WorkingFolderClaim&& other) noexcept {
    std::swap(file_, other.file_);
    return *this;
}

WorkingFolderClaim::~WorkingFolderClaim() {
    if (file_ >= 0) close(file_);
}

}
