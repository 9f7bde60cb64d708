#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

namespace tavaro {

/// A file being written. `beside` writes under a hidden name in the same folder, and `commit` renames it: under the
/// final name there is never half a file; what a killed process left hidden beside it is removed. `inPlace` writes
/// under the final name at once and keeps what is written. Failures are `MediaError`s with the words of a failed
/// writing.
class OutputFile {
public:
    enum class Place { beside, inPlace };

    OutputFile(std::filesystem::path file, Place place);
    OutputFile(OutputFile const&) = delete;
    OutputFile& operator=(OutputFile const&) = delete;

    /// Removes what `beside` wrote and did not commit.
    ~OutputFile();

    std::filesystem::path const& file() const { return file_; }
    /// Where the bytes are now.
    std::filesystem::path const& writtenPath() const { return written_; }
    int descriptor() const { return descriptor_; }

    /// 0, or the errno of what failed.
    int write(std::span<std::uint8_t const> bytes);

    /// Syncs to the disk and gives the file its name.
    void commit();

private:
    void close();

    std::filesystem::path file_;
    std::filesystem::path written_;
    Place place_;
    int descriptor_ = -1;
    bool isCommitted_ = false;
};

}
