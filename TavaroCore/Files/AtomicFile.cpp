#include <TavaroCore/Files/AtomicFile.h>

#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroCore/Files/FolderLock.h>
#include <TavaroCore/Files/MappedFile.h>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace tavaro {

namespace {

class Descriptor {
public:
    explicit Descriptor(int value) : value_(value) {}
    ~Descriptor() {
        if (value_ >= 0) close(value_);
    }
    Descriptor(Descriptor&& other) noexcept : value_(std::exchange(other.value_, -1)) {}

    int get() const { return value_; }
    bool isOpen() const { return value_ >= 0; }

private:
    int value_;
};

[[noreturn]] void failWriting(std::filesystem::path const& file, int code) {
    auto const kind = code == ENOSPC || code == EDQUOT ? FileError::Kind::diskFull : FileError::Kind::cannotWrite;
    throw FileError(kind, fmt::format("Could not write “{}”: {}.", file.string(), systemReason(code)));
}

[[noreturn]] void failReading(std::filesystem::path const& file, int code) {
    throw FileError(FileError::Kind::cannotRead,
                    fmt::format("Could not read “{}”: {}.", file.string(), systemReason(code)));
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

std::filesystem::path beside(std::filesystem::path const& file) {
    std::filesystem::path temporary = file;
    temporary += ".tmp";
    return temporary;
}

/// Writes and flushes the temporary file beside `file`; removes it again when that fails.
void writeBeside(std::filesystem::path const& file, std::string_view bytes) {
    auto const temporary = beside(file);
    int failure = 0;
    {
        Descriptor const out(open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
        if (!out.isOpen()) failWriting(file, errno);
        failure = writeAll(out.get(), bytes);
        if (!failure && fsync(out.get()) != 0) failure = errno;
    }
    if (!failure) return;
    unlink(temporary.c_str());
    failWriting(file, failure);
}

void flushFolder(std::filesystem::path const& file) {
    auto const folder = file.has_parent_path() ? file.parent_path() : std::filesystem::path(".");
    Descriptor const directory(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.isOpen()) fsync(directory.get()); // some file systems refuse; the rename itself is already done
}

void renameIntoPlace(std::filesystem::path const& temporary, std::filesystem::path const& file) {
    if (rename(temporary.c_str(), file.c_str()) == 0) return;
    int const failure = errno;
    unlink(temporary.c_str());
    failWriting(file, failure);
}

/// A second name for the same file, or a copy where the file system knows no second names.
void duplicate(std::filesystem::path const& file, std::filesystem::path const& to) {
    unlink(to.c_str());
    if (link(file.c_str(), to.c_str()) == 0) return;
    std::error_code code;
    std::filesystem::copy_file(file, to, std::filesystem::copy_options::overwrite_existing, code);
    if (code) failWriting(to, code.value());
    flushToDisk(to);
}

}

void writeFileAtomically(std::filesystem::path const& file, std::string_view bytes) {
    writeBeside(file, bytes);
    renameIntoPlace(beside(file), file);
    flushFolder(file);
}

void replaceFileKeepingBackup(std::filesystem::path const& file, std::filesystem::path const& backup,
                              std::string_view bytes) {
    FolderLock const lock(file.parent_path()); // the temporary files of two savers have the same names
    writeBeside(file, bytes);
    if (access(file.c_str(), F_OK) == 0) {
        try {
            duplicate(file, beside(backup));
            renameIntoPlace(beside(backup), backup);
        } catch (...) {
            unlink(beside(file).c_str());
            throw;
        }
    }
    renameIntoPlace(beside(file), file);
    flushFolder(file);
}

void exchangeFiles(std::filesystem::path const& a, std::filesystem::path const& b) {
    FolderLock const lock(a.parent_path());
    if (renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE) != 0) {
        if (errno != EINVAL && errno != ENOSYS) failWriting(a, errno);
        duplicate(a, beside(a));
        duplicate(b, beside(b));
        renameIntoPlace(beside(b), a);
        renameIntoPlace(beside(a), b);
    }
    flushFolder(a);
}

void flushToDisk(std::filesystem::path const& file) {
    Descriptor const written(open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!written.isOpen() || fsync(written.get()) != 0) failWriting(file, errno);
}

namespace {

/// Opens a plain file that is not too large and tells its size. A closed descriptor when there is no such file.
std::pair<Descriptor, std::size_t> openForReading(std::filesystem::path const& file, std::uint64_t maxBytes) {
    Descriptor in(open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!in.isOpen()) {
        if (errno == ENOENT || errno == ENOTDIR) return {std::move(in), 0};
        failReading(file, errno);
    }
    struct stat about {};
    if (fstat(in.get(), &about) != 0) failReading(file, errno);
    if (S_ISDIR(about.st_mode)) failReading(file, EISDIR);
    if (!S_ISREG(about.st_mode))
        throw FileError(FileError::Kind::cannotRead,
                        fmt::format("Could not read “{}”: it is not a plain file.", file.string()));
    if (static_cast<std::uint64_t>(about.st_size) > maxBytes)
        throw FileError(FileError::Kind::tooLarge,
                        fmt::format("Could not read “{}”: it is larger than {} bytes.", file.string(), maxBytes));
    return {std::move(in), static_cast<std::size_t>(about.st_size)};
}

}

std::optional<std::string> readWholeFile(std::filesystem::path const& file, std::uint64_t maxBytes) {
    auto const [in, size] = openForReading(file, maxBytes);
    if (!in.isOpen()) return std::nullopt;
    std::string bytes(size, '\0');
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

std::optional<MappedFile> MappedFile::open(std::filesystem::path const& file, std::uint64_t maxBytes) {
    auto const [in, size] = openForReading(file, maxBytes);
    if (!in.isOpen()) return std::nullopt;
    if (size == 0) return MappedFile({});
    auto* const bytes = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, in.get(), 0);
    if (bytes == MAP_FAILED) failReading(file, errno);
    return MappedFile({static_cast<char const*>(bytes), size});
}

MappedFile::~MappedFile() {
    if (!bytes_.empty()) munmap(const_cast<char*>(bytes_.data()), bytes_.size());
}

}
