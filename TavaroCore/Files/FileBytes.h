#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

namespace tavaro {

/// The bytes of a file, for large files that are read once: read in one go into memory of their own. Other programs may
/// cut a file short in place while it is in use, which the pages of a mapped file do not survive.
class FileBytes {
public:
    /// None when there is no such file. Throws `FileError` for anything else, also for a file above `maxBytes`.
    static std::optional<FileBytes> read(std::filesystem::path const& file, std::uint64_t maxBytes = 1ull << 30);

    std::string_view bytes() const { return {memory_.get(), size_}; }

private:
    FileBytes(std::unique_ptr<char[]> memory, std::size_t size) : memory_(std::move(memory)), size_(size) {}

    std::unique_ptr<char[]> memory_;
    std::size_t size_;
};

}
