#include <TavaroCapture/Recovery/Private/WorkingFolderClaim.h>

namespace tavaro {

std::optional<WorkingFolderClaim> WorkingFolderClaim::take(std::filesystem::path const& directory) {
    auto file = FileDescriptor::open(directory / ".claim", FileDescriptor::Opening::lockFile);
    if (!file.isOpen() || !file.tryLock(FileDescriptor::Sharing::exclusive)) return std::nullopt;
    return WorkingFolderClaim(std::move(file));
}

}
