#pragma once

#include <TavaroCore/Files/FileDescriptor.h>

#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>

namespace tavaro {

/// An open file whose size counts. Everything that comes from outside is opened as one: what waits for a writer or has
/// no end (pipes, sockets, devices) is refused at once.
struct PlainFile {
    FileDescriptor descriptor;
    std::size_t size = 0;

    static constexpr auto anySize = std::numeric_limits<std::uint64_t>::max();

    /// Opens a plain file that is not larger than `maxBytes`. None when there is no such file. Throws `FileError` for
    /// anything else.
    static std::optional<PlainFile> open(std::filesystem::path const& file, std::uint64_t maxBytes);
};

}
