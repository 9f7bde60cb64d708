#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>
#include <utility>

namespace tavaro {

/// The bytes of a file without a copy of them, for large files that are read once. They are those that the name meant
/// when it was opened, also when another file takes its place meanwhile, as all writers here do; only a file that is
/// cut short in place must not be read so.
class MappedFile {
public:
    /// None when there is no such file. Throws `FileError` for anything else, also for a file above `maxBytes`.
    static std::optional<MappedFile> open(std::filesystem::path const& file, std::uint64_t maxBytes = 1ull << 30);

    MappedFile(MappedFile&& other) noexcept : bytes_(std::exchange(other.bytes_, {})) {}
    MappedFile& operator=(MappedFile&& other) noexcept {
        std::swap(bytes_, other.bytes_);
        return *this;
    }
    ~MappedFile();

    std::string_view bytes() const { return bytes_; }

private:
    explicit MappedFile(std::string_view bytes) : bytes_(bytes) {}

    std::string_view bytes_;
};

}
