#pragma once

#include <TavaroCore/Files/FileDescriptor.h>

#include <filesystem>
#include <optional>
#include <utility>

namespace tavaro {

/// While it lives, no other lock of the folder does, in this process or another; making one waits for that. Ends with
/// the process however that dies. A folder that is missing, or a file system without locks, goes without.
class FolderLock {
public:
    explicit FolderLock(std::filesystem::path const& folder);
    /// The same without waiting: none when another has it.
    static std::optional<FolderLock> unlessTaken(std::filesystem::path const& folder);
    /// The lock without waiting: none when another has it, the folder is missing, or there are no locks here.
    static std::optional<FolderLock> ifFree(std::filesystem::path const& folder);

private:
    explicit FolderLock(FileDescriptor locked) : folder_(std::move(locked)) {}

    FileDescriptor folder_;
};

}
