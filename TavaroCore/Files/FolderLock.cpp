#include <TavaroCore/Files/FolderLock.h>

namespace tavaro {

FolderLock::FolderLock(std::filesystem::path const& folder)
    : folder_(FileDescriptor::open(folder.empty() ? "." : folder, FileDescriptor::Opening::folder)) {
    if (folder_.isOpen()) folder_.lock(FileDescriptor::Sharing::exclusive);
}

}
