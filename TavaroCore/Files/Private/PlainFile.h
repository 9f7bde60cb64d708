#pragma once

#include <TavaroCore/Files/FileDescriptor.h>

#include <cstdint>
#include <filesystem>
#include <optional>

namespace tavaro {

struct PlainFile {
    FileDescriptor descriptor;
    std::size_t size = 0;

    /// Opens a plain file that is not larger than `maxBytes`. None when there is no such file. Throws `FileError` for
    /// anything else.
    static std::optional<PlainFile> open(std::filesystem::path const& file, std::uint64_t maxBytes);
};

}
