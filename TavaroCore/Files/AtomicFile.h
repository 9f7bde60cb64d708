#pragma once

#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Files/PendingFile.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

/// Puts `bytes` into the file in one step: a crash or a full disk leaves the old file or the new one, never a part.
/// A file that was there keeps its permissions. Throws `FileError`.
void writeFileAtomically(std::filesystem::path const& file, std::string_view bytes,
                         PendingFile::IfTaken = PendingFile::IfTaken::replace);

/// The same, and the file as it was becomes `backup`, also in one step: at every instant there is a complete document
/// under `file`, and under `backup` a complete earlier one. Without an old file the backup is left alone.
void replaceFileKeepingBackup(std::filesystem::path const& file, std::filesystem::path const& backup,
                              std::string_view bytes);
/// The same for what `write` appends. Where that gives false, nothing changes, and so does this.
bool replaceFileKeepingBackup(std::filesystem::path const& file, std::filesystem::path const& backup,
                              std::function<bool(PendingFile&)> const& write);

/// Lets two files of one folder trade places, in one step where the file system can. Where it cannot, a crash in
/// between may leave both names with the content that `a` gets, never without a complete file. Throws `FileError`.
void exchangeFiles(std::filesystem::path const& a, std::filesystem::path const& b);

/// The whole file; none when there is no such file. Throws `FileError` for anything else, also for a file above
/// `maxBytes`.
std::optional<std::string> readWholeFile(std::filesystem::path const& file, std::uint64_t maxBytes = 1ull << 30);

}
