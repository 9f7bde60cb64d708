#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <utility>

namespace tavaro {

/// The one owner of an open file or folder. Programs that are started do not inherit it. Failures are error numbers of
/// the operating system, since some callers may not throw (callbacks of C libraries) and others have their own words.
class FileDescriptor {
public:
    enum class Opening {
        reading, // at once, also where it is a pipe that nobody writes to
        folder,
        newFile,     // fails where the name is taken, be it by a link that leads nowhere
        overwriting, // under the final name itself, emptied
        lockFile,    // made where missing; never through a link
    };
    enum class Sharing { shared, exclusive };

    static constexpr auto everyone = std::filesystem::perms(0666); // less what the user's mask takes away

    FileDescriptor() = default;
    explicit FileDescriptor(int owned) : value_(owned) {}
    FileDescriptor(FileDescriptor&& other) noexcept : value_(std::exchange(other.value_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(value_, other.value_);
        return *this;
    }
    ~FileDescriptor() { close(); }

    /// Closed, with `errno` set, where that fails. New files can be read and written; `permissions` are theirs.
    static FileDescriptor open(std::filesystem::path const& file, Opening,
                               std::filesystem::perms permissions = everyone);
    /// A file of the folder's disk that never has a name, and ends with the descriptor. Closed, with `errno` set, where
    /// that fails.
    static FileDescriptor nameless(std::filesystem::path const& folder);

    bool isOpen() const { return value_ >= 0; }
    int get() const { return value_; }
    void close();
    /// For who closes it from now on.
    int release() { return std::exchange(value_, -1); }

    /// Writes all of it. 0, or what stopped it.
    [[nodiscard]] int write(std::span<std::byte const> bytes) const;
    /// Fills `bytes`, less at the end of the file. How many there were, or the negated error number.
    std::ptrdiff_t read(std::span<std::byte> bytes) const;
    std::ptrdiff_t readAt(std::int64_t offset, std::span<std::byte> bytes) const;
    /// Hears every now and then how many bytes are copied; false ends that with `ECANCELED`.
    using CopyWatch = std::function<bool(std::uint64_t copied)>;
    /// Appends the rest of `from`, without moving the bytes through this process where the disk can. 0, or what stopped
    /// it.
    [[nodiscard]] int copy(FileDescriptor const& from, CopyWatch const& proceed = {}) const;
    /// Waits until what was written is on the disk. 0, or what went wrong.
    [[nodiscard]] int sync() const;

    /// The folder of a file that may be given by its bare name.
    static std::filesystem::path folderOf(std::filesystem::path const& file);
    /// Brings the names that the file's folder has got to the disk. Some file systems refuse; the names are given by
    /// then.
    static void syncFolderOf(std::filesystem::path const& file);

    /// A lock belongs to this opening, so it also keeps other threads out. It ends with the descriptor, however the
    /// process dies. False, with `errno` set, where another has it or the file system knows no locks.
    bool tryLock(Sharing) const;
    /// The same, but waits for who has it.
    bool lock(Sharing) const;

private:
    int value_ = -1;
};

}
