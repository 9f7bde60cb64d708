#include <TavaroMedia/FFmpeg/Private/Failures.h>

#include <TavaroCore/Errors/SystemReason.h>

#include <cerrno>
#include <mutex>

#include <fmt/format.h>

extern "C" {
#include <libavutil/error.h>
#include <libavutil/log.h>
#include <libavutil/mem.h>
}

namespace tavaro::ffmpeg {

namespace {

using Kind = MediaError::Kind;

/// "there is no folder 'films'": what a file that cannot be made for want of its folder is told.
std::string missingFolder(std::filesystem::path const& file) {
    auto const folder = file.parent_path();
    if (folder.empty()) return "its name is empty";
    std::error_code ignored;
    if (std::filesystem::exists(folder, ignored)) return fmt::format("'{}' is not a folder", folder.string());
    return fmt::format("there is no folder '{}'", folder.string());
}

[[noreturn]] void raise(char const* attempt, std::filesystem::path const& file, Kind kind, std::string const& detail) {
    throw MediaError(kind, fmt::format("Could not {} '{}': {}.", attempt, file.filename().string(), detail), detail);
}

}

std::string reason(int code) {
    switch (code) {
    case AVERROR_INVALIDDATA: return "it is damaged, or not a movie";
    case AVERROR_EOF: return "it ends too early";
    case AVERROR_DECODER_NOT_FOUND: return "there is no decoder for it here";
    case AVERROR_ENCODER_NOT_FOUND: return "there is no such encoder here";
    case AVERROR_EXTERNAL: return "the encoder failed";
    default: break;
    }
    constexpr int largestErrorNumber = 4095; // FFmpeg's own codes are four letters, far beyond
    if (AVUNERROR(code) > 0 && AVUNERROR(code) <= largestErrorNumber) return systemReason(AVUNERROR(code));
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return text;
}

void throwReading(std::filesystem::path const& file, Kind kind, std::string const& detail) {
    raise("read", file, kind, detail);
}

void throwReading(std::filesystem::path const& file, int code, Kind otherwise) {
    auto const isMissing = code == AVERROR(ENOENT) || code == AVERROR(ENOTDIR);
    // FFmpeg calls some files an invalid argument that are no movie.
    throwReading(file, isMissing ? Kind::missing : otherwise,
                 reason(code == AVERROR(EINVAL) ? AVERROR_INVALIDDATA : code));
}

void throwReading(std::filesystem::path const& file, FileError const& error) {
    switch (error.kind) {
    case FileError::Kind::notPlain: throwReading(file, Kind::unreadable, "it is not a plain file");
    case FileError::Kind::tooLarge: throwReading(file, Kind::unreadable, "it is too large");
    default: throwReading(file, -error.errorNumber);
    }
}

void throwWriting(std::filesystem::path const& file, Kind kind, std::string const& detail) {
    raise("write", file, kind, detail);
}

void throwWriting(std::filesystem::path const& file, int code, Kind otherwise) {
    switch (code) {
    case AVERROR(ENOSPC):
    case AVERROR(EDQUOT):
    case AVERROR(EFBIG): throwWriting(file, Kind::diskFull, reason(code));
    case AVERROR(ENOENT):
    case AVERROR(ENOTDIR): throwWriting(file, Kind::notWritable, missingFolder(file));
    case AVERROR(EEXIST):
    case AVERROR(EISDIR):
    case AVERROR(EACCES):
    case AVERROR(EPERM):
    case AVERROR(EROFS):
    case AVERROR(ENAMETOOLONG): throwWriting(file, Kind::notWritable, reason(code));
    case AVERROR_ENCODER_NOT_FOUND: throwWriting(file, Kind::unsupported, reason(code));
    default: throwWriting(file, otherwise, reason(code));
    }
}

void prepareLibraries() {
    static std::once_flag once;
    std::call_once(once, [] {
        av_log_set_level(AV_LOG_QUIET);
        av_max_alloc(std::size_t{1} << 30);
    });
}

}
