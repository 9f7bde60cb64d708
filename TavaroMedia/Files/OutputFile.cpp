#include <TavaroMedia/Files/OutputFile.h>

#include <atomic>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <TavaroMedia/FFmpeg/Failures.h>

namespace tavaro {

namespace {

// Hidden, and different for every process and file, so that two writers of one name do not meet before the rename.
// Long names are cut: the hidden one must fit into the same 255 bytes. The ending stays, since formats go by it.
std::filesystem::path hiddenNeighbour(std::filesystem::path const& file) {
    static std::atomic<unsigned> counter{0};
    auto const name = fmt::format(".{}.{}-{}.part{}", file.stem().string().substr(0, 128), getpid(), counter++,
                                  file.extension().string());
    return file.parent_path() / name;
}

std::filesystem::path folderOf(std::filesystem::path const& file) {
    return file.has_parent_path() ? file.parent_path() : std::filesystem::path(".");
}

}

OutputFile::OutputFile(std::filesystem::path file, Place place)
    : file_(std::move(file))
    , written_(place == Place::beside ? hiddenNeighbour(file_) : file_)
    , place_(place) {
    if (std::error_code error; std::filesystem::is_directory(file_, error)) ffmpeg::throwWriting(file_, -EISDIR);
    auto const flags = O_RDWR | O_CREAT | O_CLOEXEC | (place == Place::beside ? O_EXCL : O_TRUNC);
    descriptor_ = ::open(written_.c_str(), flags, 0666);
    if (descriptor_ < 0) ffmpeg::throwWriting(file_, -errno);
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
