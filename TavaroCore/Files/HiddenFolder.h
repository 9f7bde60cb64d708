#pragma once

#include <TavaroCore/Files/FileDescriptor.h>

#include <filesystem>

namespace tavaro {

/// A new, hidden folder beside a file or folder that is built in it and then moved out whole (`moveUnlessTaken`); only
/// its owner can look into it. Goes away with all it holds; what a killed process left goes with what is made next in
/// that place. Throws `FileError`.
class HiddenFolder {
public:
    explicit HiddenFolder(std::filesystem::path const& beside);
    ~HiddenFolder();
    HiddenFolder(HiddenFolder const&) = delete;
    HiddenFolder& operator=(HiddenFolder const&) = delete;

    std::filesystem::path const& path() const { return path_; }

private:
    std::filesystem::path path_;
    FileDescriptor descriptor_;
};

}
