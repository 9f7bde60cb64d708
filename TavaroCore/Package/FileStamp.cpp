#include <TavaroCore/Package/FileStamp.h>

#include <sys/stat.h>

namespace tavaro {

std::optional<FileStamp> stampOf(std::filesystem::path const& file) {
    constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;
    struct stat about {};
    if (stat(file.c_str(), &about) != 0) return std::nullopt;
    return FileStamp{about.st_mtim.tv_sec * nanosecondsPerSecond + about.st_mtim.tv_nsec, about.st_size,
                     static_cast<std::int64_t>(about.st_ino)};
}

}
