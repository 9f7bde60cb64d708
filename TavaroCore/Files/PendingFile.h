#pragma once

#include <TavaroCore/Files/FileDescriptor.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string_view>

namespace tavaro {

/// A file that appears under its name only when complete. Until then it is written under a hidden name beside it that
/// nobody else has, so that a link planted there is not followed and several writers of one name each end whole. Goes
/// away unless it is committed; what a killed process left goes with the next pending file of the folder. A file that
/// it replaces passes on its permissions. Failures are `FileError`s that name the final file.
class PendingFile {
public:
    /// What becomes of a file that has the name already.
    enum class IfTaken { replace, refuse };

    /// When the folder is asked to bring its new names to the disk: `withNext` is for a file whose neighbour follows.
    enum class FolderFlush { now, withNext };

    /// `permissions` are those of a file that was not there before, less what the user's mask takes away.
    explicit PendingFile(std::filesystem::path file, std::filesystem::perms permissions = FileDescriptor::everyone);
    /// A second name of `existing` that waits to become `file`; a copy where the file system has no second names.
    static PendingFile twin(std::filesystem::path const& existing, std::filesystem::path const& file);
    PendingFile(PendingFile&& other) noexcept;
    PendingFile& operator=(PendingFile&&) = delete;
    ~PendingFile();

    std::filesystem::path const& file() const { return file_; }
    /// Where the bytes are until it is committed.
    std::filesystem::path const& path() const { return path_; }
    FileDescriptor const& descriptor() const { return descriptor_; }

    void append(std::string_view bytes);
    /// The same for callers that may not throw: 0, or the error number.
    [[nodiscard]] int write(std::span<std::byte const> bytes);
    /// Appends what another file holds.
    void copy(std::filesystem::path const& from, FileDescriptor::CopyWatch const& proceed = {});

    /// Appends those bytes of `from`. False, with some of them appended, where it has fewer.
    [[nodiscard]] bool copyRange(FileDescriptor const& from, std::int64_t begin, std::int64_t end);

    /// Waits until what was written is on the disk; committing does it, too.
    void flush();
    /// Gives the file its name; what had the name is replaced.
    void commit(FolderFlush = FolderFlush::now);
    void commit(IfTaken);
    /// The same, but false when something has the name. Then it is pending still, and may be asked for another name of
    /// the same folder.
    [[nodiscard]] bool commitUnlessTaken() { return commitUnlessTaken(file_); }
    [[nodiscard]] bool commitUnlessTaken(std::filesystem::path const& name);

    /// Whether a file of that name is one that is or was pending, of whatever program.
    static bool isPendingName(std::string_view name);

private:
    PendingFile() = default;
    void make(std::filesystem::perms permissions);
    void finish(FolderFlush flush);

    std::filesystem::path file_;
    std::filesystem::path path_; // empty once it is committed
    FileDescriptor descriptor_;
    bool isFlushed_ = false;
};

}
