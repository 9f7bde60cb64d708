#pragma once

#include <TavaroCore/Files/FileDescriptor.h>

#include <filesystem>

namespace tavaro {

/// While it lives, no other lock of the folder does, in this process or another; making one waits for that. Ends with
/// the process however that dies. A folder that is missing, or a file system without locks, goes without.
class FolderLock {
public:
    explicit FolderLock(std::filesystem::path const& folder);

private:
    FileDescriptor folder_;
};

}
