#include <TavaroVoice/Transcription/Private/SpeechFolder.h>

#include <TavaroCore/Files/FileError.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

/// A folder of this user itself, no link to one.
bool isOwnFolder(fs::path const& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid();
}

/// One that was just made may not be locked yet.
bool isOlderThanAMinute(fs::path const& path) {
    std::error_code error;
    auto const written = fs::last_write_time(path, error);
    return !error && fs::file_time_type::clock::now() - written > std::chrono::minutes(1);
}

void removeLeftovers(fs::path const& in) {
    std::error_code error;
    for (fs::directory_iterator each(in, error), end; !error && each != end; each.increment(error)) {
        auto const& path = each->path();
        if (!path.filename().string().starts_with(SpeechFolder::prefix)) continue;
        if (!isOwnFolder(path) || !isOlderThanAMinute(path) || !FolderLock::ifFree(path)) continue;
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
}

}

SpeechFolder::SpeechFolder(fs::path const& in) {
    removeLeftovers(in);
    auto pattern = (in / (std::string(prefix) + "XXXXXX")).string();
    if (!::mkdtemp(pattern.data())) throw FileError::writing(pattern, errno);
    path_ = pattern;
    lock_ = FolderLock::ifFree(path_);
}

SpeechFolder::~SpeechFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

}
