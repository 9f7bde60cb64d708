#pragma once

#include <TavaroCore/Files/FileDescriptor.h>

#include <filesystem>
#include <optional>
#include <utility>

namespace tavaro {

/// A hold on a take's working folder, for as long as the object lives and at most as long as the process: nobody else,
/// in this process or another, can hold it at the same time.
class WorkingFolderClaim {
public:
    /// None while somebody else holds the folder, and for a folder that cannot be written.
    static std::optional<WorkingFolderClaim> take(std::filesystem::path const& directory);

private:
    explicit WorkingFolderClaim(FileDescriptor file) : file_(std::move(file)) {}

    FileDescriptor file_;
};

}
