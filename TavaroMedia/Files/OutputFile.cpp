#include <TavaroMedia/Files/OutputFile.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <TavaroMedia/FFmpeg/Private/Failures.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

// Long names are cut: the hidden one must fit into the same 255 bytes.
std::string hiddenStem(fs::path const& file) { return fmt::format(".{}.", file.stem().string().substr(0, 128)); }

// The ending stays, since formats go by it.
std::string hiddenEnding(fs::path const& file) { return ".part" + file.extension().string(); }

// Hidden, and different for every process and file, so that two writers of one name do not meet before the rename.
fs::path hiddenNeighbour(fs::path const& file) {
    static std::atomic<unsigned> counter{0};
    return file.parent_path() / fmt::format("{}{}-{}{}", hiddenStem(file), getpid(), counter++, hiddenEnding(file));
}

/// Whether a name in the file's folder is a hidden neighbour of it, of any process.
bool isHiddenNeighbour(std::string const& name, fs::path const& file) {
    auto const stem = hiddenStem(file);
    auto const ending = hiddenEnding(file);
    if (name.size() <= stem.size() + ending.size() || !name.starts_with(stem) || !name.ends_with(ending)) return false;
    auto const middle = name.substr(stem.size(), name.size() - stem.size() - ending.size());
    return middle.find('-') != std::string::npos &&
           std::ranges::all_of(middle, [](char c) { return c == '-' || (c >= '0' && c <= '9'); });
}

/// A writer holds a lock on what it writes, which ends with its process: what nobody holds is of a process that was
/// killed. A minute's grace covers the moment between a file's creation and its lock.
void removeIfAbandoned(fs::path const& neighbour) {
    std::error_code error;
    auto const written = fs::last_write_time(neighbour, error);
    if (error || fs::file_time_type::clock::now() - written < std::chrono::minutes(1)) return;
    int const descriptor = ::open(neighbour.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (descriptor < 0) return;
    if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0) ::unlink(neighbour.c_str());
    ::close(descriptor);
}

fs::path folderOf(fs::path const& file) { return file.has_parent_path() ? file.parent_path() : fs::path("."); }

void removeAbandonedNeighbours(fs::path const& file) {
    std::error_code error;
    for (fs::directory_iterator entry(folderOf(file), error), end; !error && entry != end; entry.increment(error))
        if (isHiddenNeighbour(entry->path().filename().string(), file)) removeIfAbandoned(entry->path());
}

}

OutputFile::OutputFile(fs::path file, Place place)
    : file_(std::move(file))
    , written_(place == Place::beside ? hiddenNeighbour(file_) : file_)
    , place_(place) {
    if (std::error_code error; fs::is_directory(file_, error)) ffmpeg::throwWriting(file_, -EISDIR);
    if (place == Place::beside) removeAbandonedNeighbours(file_);
    auto const flags = O_RDWR | O_CREAT | O_CLOEXEC | (place == Place::beside ? O_EXCL : O_TRUNC);
    descriptor_ = ::open(written_.c_str(), flags, 0666);
    if (descriptor_ < 0) ffmpeg::throwWriting(file_, -errno);
    if (place == Place::beside) ::flock(descriptor_, LOCK_EX | LOCK_NB);
}

OutputFile::~OutputFile() {
    close();
    if (place_ == Place::beside && !isCommitted_) ::unlink(written_.c_str());
}

int OutputFile::write(std::span<std::uint8_t const> bytes) {
    while (!bytes.empty()) {
        auto const count = ::write(descriptor_, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return errno;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return 0;
}

void OutputFile::commit() {
    if (::fsync(descriptor_) != 0) ffmpeg::throwWriting(file_, -errno);
    close();
    if (place_ == Place::beside && ::rename(written_.c_str(), file_.c_str()) != 0) ffmpeg::throwWriting(file_, -errno);
    isCommitted_ = true;
    written_ = file_;
    // The new name itself is on the disk only when its folder is; a file system that cannot sync a folder loses
    // nothing.
    if (int const folder = ::open(folderOf(file_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); folder >= 0) {
        ::fsync(folder);
        ::close(folder);
    }
}

void OutputFile::close() {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
}

}
