#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace tavaro {

struct ExportSettings;
class PendingFile;

/// Bytes that an export of that many seconds takes, roughly.
std::int64_t estimatedFileSize(ExportSettings const& settings, double duration);

/// "640 KB", "14 MB", "1.2 GB": two figures or three, in powers of a thousand.
std::string fileSizeText(std::int64_t bytes);

/// A text as part of a file's name: without blanks around it, without what no such name can hold, never hidden, and
/// short enough that something and a number fit behind it; "Export" where that leaves nothing.
std::string fileNamePart(std::string_view text);

/// Name of an export without its ending: the project's name, the size class of the canvas and a movie's codec, as in
/// "Onboarding 1080p HEVC". The size class is that of the canvas's smaller side, so a vertical movie is "1080p" too.
/// Never longer than a file system takes, with room for an ending and a number.
std::string suggestedFileName(ExportSettings const& settings, std::string_view projectName);

/// `file` itself when nothing has that name yet, else the first free one of "Name 2.mp4", "Name 3.mp4", …: an export
/// never overwrites a file. Where such a name would be too long, the name before the number is cut. Throws `FileError`
/// where the name cannot be looked at: it is too long, or its folder cannot be entered.
std::filesystem::path unusedFile(std::filesystem::path const& file);

/// Gives a pending file the first of those names that is free, however many exports want one at once, and returns it.
/// Throws `FileError`.
std::filesystem::path commitUnderUnusedName(PendingFile& pending, std::filesystem::path const& wanted);

}
