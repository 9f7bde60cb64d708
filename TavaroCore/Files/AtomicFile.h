#pragma once

#include <TavaroCore/Errors/Error.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

class FileError : public Error {
public:
    enum class Kind { cannotRead, cannotWrite, diskFull, tooLarge };
    FileError(Kind kind, std::string const& sentence) : Error(sentence), kind(kind) {}
    Kind const kind;
};

/// Puts `bytes` into the file in one step: a crash or a full disk leaves the old file or the new one, never a part.
/// Writes beside it, flushes to the disk, renames, flushes the folder. Throws `FileError`.
void writeFileAtomically(std::filesystem::path const& file, std::string_view bytes);

/// The same, and the file as it was becomes `backup`, also in one step: at every instant there is a complete document
/// under `file`, and under `backup` a complete earlier one. Without an old file the backup is left alone.
void replaceFileKeepingBackup(std::filesystem::path const& file, std::filesystem::path const& backup,
                              std::string_view bytes);

/// Lets two files of one folder trade places, in one step where the file system can. Where it cannot, a crash in
/// between may leave both names with the content that `a` gets, never without a complete file. Throws `FileError`.
void exchangeFiles(std::filesystem::path const& a, std::filesystem::path const& b);

/// Waits until what was written to the file is on the disk. Throws `FileError`.
void flushToDisk(std::filesystem::path const& file);

/// The whole file; none when there is no such file. Throws `FileError` for anything else, also for a file above
/// `maxBytes`.
std::optional<std::string> readWholeFile(std::filesystem::path const& file, std::uint64_t maxBytes = 1ull << 30);

}
