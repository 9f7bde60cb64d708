#pragma once

#include <filesystem>
#include <string>

#include <TavaroCore/Files/FileError.h>
#include <TavaroMedia/Errors/MediaError.h>

namespace tavaro::ffmpeg {

/// The bare reason behind a code of FFmpeg's, which may also be a negated `errno`: "the disk is full".
std::string reason(int code);

/// "Could not read 'take.mov': …." Kinds that the code itself tells (no such file, full disk, no permission) are taken
/// from it; any other is `otherwise`.
[[noreturn]] void throwReading(std::filesystem::path const& file, int code,
                               MediaError::Kind otherwise = MediaError::Kind::unreadable);
[[noreturn]] void throwReading(std::filesystem::path const& file, MediaError::Kind kind, std::string const& detail);
[[noreturn]] void throwReading(std::filesystem::path const& file, FileError const& error);
[[noreturn]] void throwWriting(std::filesystem::path const& file, int code,
                               MediaError::Kind otherwise = MediaError::Kind::refused);
[[noreturn]] void throwWriting(std::filesystem::path const& file, MediaError::Kind kind, std::string const& detail);

/// Passes a result through, or throws it as a failure of writing `file`.
inline int checkWriting(std::filesystem::path const& file, int code) {
    if (code < 0) throwWriting(file, code);
    return code;
}

/// Runs a step of writing `file`, and puts the file's failure into the words of this library.
template<class Step> auto writing(std::filesystem::path const& file, Step step) {
    try {
        return step();
    } catch (FileError const& error) {
        throwWriting(file, -error.errorNumber);
    }
}

/// The same for a step of reading it.
template<class Step> auto reading(std::filesystem::path const& file, Step step) {
    try {
        return step();
    } catch (FileError const& error) {
        throwReading(file, error);
    }
}

/// Once for the process: FFmpeg keeps quiet on standard error, and no single allocation of it passes 1 GiB, so that a
/// forged header cannot take the machine's memory.
void prepareLibraries();

}
