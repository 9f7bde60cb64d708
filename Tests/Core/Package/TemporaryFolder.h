#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace tavaro {

/// A folder of one test, gone with it.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tavaro-test-XXXXXX").string();
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

private:
    std::filesystem::path path_;
};

}
