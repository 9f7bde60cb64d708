#include <TavaroCore/Files/PlainFile.h>

#include <TavaroCore/Files/FileError.h>

#include <cerrno>
#include <fmt/format.h>
#include <sys/stat.h>

namespace tavaro {

std::optional<PlainFile> PlainFile::open(std::filesystem::path const& file, std::uint64_t maxBytes) {
    auto descriptor = FileDescriptor::open(file, FileDescriptor::Opening::reading);
    if (!descriptor.isOpen()) {
        if (errno == ENOENT || errno == ENOTDIR) return std::nullopt;
        throw FileError::reading(file, errno);
    }
    struct stat about {};
    if (fstat(descriptor.get(), &about) != 0) throw FileError::reading(file, errno);
    if (S_ISDIR(about.st_mode)) throw FileError::reading(file, EISDIR);
    if (!S_ISREG(about.st_mode))
        throw FileError(FileError::Kind::notPlain,
                        fmt::format("Could not read “{}”: it is not a plain file.", file.string()));
    if (static_cast<std::uint64_t>(about.st_size) > maxBytes)
        throw FileError(FileError::Kind::tooLarge,
                        fmt::format("Could not read “{}”: it is larger than {} bytes.", file.string(), maxBytes));
    return PlainFile{std::move(descriptor), static_cast<std::size_t>(about.st_size)};
}

}
