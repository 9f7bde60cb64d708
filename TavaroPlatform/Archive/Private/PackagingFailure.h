#pragma once

#include <TavaroPlatform/Archive/ProjectArchive.h>

#include <TavaroCore/Errors/SystemReason.h>

#include <cerrno>
#include <filesystem>
#include <fmt/format.h>
#include <string_view>

namespace tavaro {

[[noreturn]] inline void failPackaging(std::string_view problem,
                                       ArchiveError::Kind kind = ArchiveError::Kind::cannotPackage) {
    throw ArchiveError(kind, fmt::format("Couldn't package the project: {}", problem));
}

/// Of an error number of the operating system.
[[noreturn]] inline void failPackaging(std::filesystem::path const& file, int code) {
    auto const kind =
        code == ENOSPC || code == EDQUOT ? ArchiveError::Kind::diskFull : ArchiveError::Kind::cannotPackage;
    failPackaging(fmt::format("{}: {}", file.string(), systemReason(code)), kind);
}

}
