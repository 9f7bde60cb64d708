#include <TavaroCore/Files/FileError.h>

#include <TavaroCore/Errors/SystemReason.h>

#include <cerrno>
#include <fmt/format.h>

namespace tavaro {

FileError FileError::reading(std::filesystem::path const& file, int errorNumber) {
    return {Kind::cannotRead, fmt::format("Could not read “{}”: {}.", file.string(), systemReason(errorNumber)),
            errorNumber};
}

FileError FileError::writing(std::filesystem::path const& file, int errorNumber) {
    auto const kind = errorNumber == ENOSPC || errorNumber == EDQUOT ? Kind::diskFull : Kind::cannotWrite;
    return {kind, fmt::format("Could not write “{}”: {}.", file.string(), systemReason(errorNumber)), errorNumber};
}

}
