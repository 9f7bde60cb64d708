#include <TavaroPlatform/Files/AtomicFile.h>

#include <cerrno>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace tavaro {

namespace {

class Descriptor {
public:
    explicit Descriptor(int value) : value_(value) {}
    ~Descriptor() {
        if (value_ >= 0) close(value_);
    }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    int get() const { return value_; }
    bool isOpen() const { return value_ >= 0; }

private:
    int value_;
};

std::string reason(int code) { return std::system_category().message(code); }

[[noreturn]] void failWriting(std::filesystem::path const& file, int code) {
    auto const kind = code == ENOSPC || code == EDQUOT ? FileError::Kind::diskFull : FileError::Kind::cannotWrite;
    throw FileError(kind, fmt::format("Could not write “{}”: {}.", file.string(), reason(code)));
}

[[noreturn]] void failReading(std::filesystem::path const& file, int code) {
    throw FileError(FileError::Kind::cannotRead, fmt::format("Could not read “{}”: {}.", file.string(), reason(code)));
}

/// 0, or the error that stopped it.
int writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        ssize_t const written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) return errno;
        if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

}

void writeFileAtomically(std::filesystem::path const& file, std::string_view bytes) {
    std::filesystem::path temporary = file;
    temporary += ".tmp";
    int failure = 0;
    {
        Descriptor const out(open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
        if (!out.isOpen()) failWriting(file, errno);
        failure = writeAll(out.get(), bytes);
        if (!failure && fsync(out.get()) != 0) failure = errno;
    }
    if (!failure && rename(temporary.c_str(), file.c_str()) != 0) failure = errno;
    if (failure) {
        unlink(temporary.c_str());
        failWriting(file, failure);
    }
    auto const folder = file.has_parent_path() ? file.parent_path() : std::filesystem::path(".");
    Descriptor const directory(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.isOpen()) fsync(directory.get()); // some file systems refuse; the rename itself is already done
}

std::optional<std::string> readWholeFile(std::filesystem::path const& file, std::uint64_t maxBytes) {
    Descriptor const in(open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!in.isOpen()) {
        if (errno == ENOENT || errno == ENOTDIR) return std::nullopt;
        failReading(file, errno);
    }
    struct stat about {};
    if (fstat(in.get(), &about) != 0) failReading(file, errno);
    if (!S_ISREG(about.st_mode)) failReading(file, S_ISDIR(about.st_mode) ? EISDIR : EINVAL);
    if (static_cast<std::uint64_t>(about.st_size) > maxBytes)
        throw FileError(FileError::Kind::tooLarge,
                        fmt::format("Could not read “{}”: it is larger than {} bytes.", file.string(), maxBytes));
    std::string bytes(static_cast<std::size_t>(about.st_size), '\0');
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        ssize_t const got = read(in.get(), bytes.data() + filled, bytes.size() - filled);
        if (got < 0 && errno != EINTR) failReading(file, errno);
        if (got == 0) break;
        if (got > 0) filled += static_cast<std::size_t>(got);
    }
    bytes.resize(filled);
    return bytes;
}

}
