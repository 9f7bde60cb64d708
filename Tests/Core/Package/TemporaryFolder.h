#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

namespace tavaro {

/// A folder of one test, gone with it.
class TemporaryFolder {
public:
    explicit TemporaryFolder(std::filesystem::path const& root = std::filesystem::temp_directory_path()) {
        std::string pattern = (root / "tavaro-test-XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    std::filesystem::path const& path() const { return path_; }
    std::filesystem::path operator/(std::filesystem::path const& name) const { return path_ / name; }

    /// Memory, where there is such a place: waiting for a disk tells a test nothing about who writes to it.
    static std::filesystem::path fastest() {
        return access("/dev/shm", W_OK) == 0 ? "/dev/shm" : std::filesystem::temp_directory_path();
    }

private:
    std::filesystem::path path_;
};

}
