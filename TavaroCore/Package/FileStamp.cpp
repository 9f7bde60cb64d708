#include <TavaroCore/Package/FileStamp.h>

#include <TavaroCore/Files/FileDescriptor.h>

#include <sys/stat.h>

namespace tavaro {

static FileStamp stampIn(struct stat const& about) {
    constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;
    return {about.st_mtim.tv_sec * nanosecondsPerSecond + about.st_mtim.tv_nsec, about.st_size,
            static_cast<std::int64_t>(about.st_ino)};
}

std::optional<FileStamp> stampOf(std::filesystem::path const& file) {
    struct stat about {};
    if (stat(file.c_str(), &about) != 0) return std::nullopt;
    return stampIn(about);
}

std::optional<FileStamp> stampOf(FileDescriptor const& file) {
    struct stat about {};
    if (fstat(file.get(), &about) != 0) return std::nullopt;
    return stampIn(about);
}

}
