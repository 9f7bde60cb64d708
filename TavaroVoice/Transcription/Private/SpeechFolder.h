#pragma once

#include <TavaroCore/Files/FolderLock.h>

#include <filesystem>
#include <optional>
#include <string_view>

namespace tavaro {

/// A folder of temporary sound, "tavaro-speech-…", which only its owner can look into. Goes away with all it holds;
/// what a killed process left goes when the next one is made. Throws `FileError`.
class SpeechFolder {
public:
    explicit SpeechFolder(std::filesystem::path const& in = std::filesystem::temp_directory_path());
    ~SpeechFolder();
    SpeechFolder(SpeechFolder const&) = delete;
    SpeechFolder& operator=(SpeechFolder const&) = delete;

    static constexpr std::string_view prefix = "tavaro-speech-";

    std::filesystem::path const& path() const { return path_; }

private:
    std::filesystem::path path_;
    std::optional<FolderLock> lock_;
};

}
