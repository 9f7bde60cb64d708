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

/// The whole file; none when there is no such file. Throws `FileError` for anything else, also for a file above
/// `maxBytes`.
std::optional<std::string> readWholeFile(std::filesystem::path const& file, std::uint64_t maxBytes = 1ull << 30);

}
