#pragma once

#include <TavaroCore/Records/Fields.h>

#include <cstdint>
#include <filesystem>
#include <optional>

namespace tavaro {

/// Tells whether a file is still the one that was looked at: a save makes a new file with a time of its own.
struct FileStamp {
    std::int64_t modified = 0; // nanoseconds since 1970
    std::int64_t bytes = 0;
    std::int64_t inode = 0;

    static constexpr auto fields = std::tuple{field("modified", &FileStamp::modified),
                                              field("bytes", &FileStamp::bytes), field("inode", &FileStamp::inode)};
    bool operator==(FileStamp const&) const = default;
};
static_assert(listsEveryField<FileStamp>);

class FileDescriptor;

/// None when there is no such file.
std::optional<FileStamp> stampOf(std::filesystem::path const& file);
std::optional<FileStamp> stampOf(FileDescriptor const& file);

}
