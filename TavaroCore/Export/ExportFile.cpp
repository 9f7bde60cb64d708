#include <TavaroCore/Export/ExportFile.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Export/ExportSettings.h>
#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Files/PendingFile.h>

#include <algorithm>
#include <array>

#include <fmt/format.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t longestNamePart = 180;   // bytes; file systems take 255
constexpr std::size_t certainNameLength = 143; // bytes that every file system takes, also one that encrypts names

// Blanks that a person's typing or pasting leaves at the ends of a name, in UTF-8.
constexpr std::array<std::string_view, 10> blanks{
    " ", "\t", "\n", "\v", "\f", "\r", "\u0085", "\u00A0", "\u2003", "\u3000",
};

std::string_view trimmed(std::string_view text) {
    auto const strip = [&](auto hasBlank, auto remove) {
        for (bool again = true; again;) {
            again = false;
            for (auto const blank : blanks) {
                if (!hasBlank(blank)) continue;
                remove(blank.size());
                again = true;
            }
        }
    };
    strip([&](std::string_view blank) { return text.starts_with(blank); },
          [&](std::size_t size) { text.remove_prefix(size); });
    strip([&](std::string_view blank) { return text.ends_with(blank); },
          [&](std::size_t size) { text.remove_suffix(size); });
    return text;
}

std::string qualityLabel(Size2 size) {
    auto const side = std::min(size.width, size.height);
    return side == 2160 ? "4K" : std::to_string(side) + "p";
}

std::string_view codecSuffix(VideoCodecChoice codec) {
    switch (codec) {
    case VideoCodecChoice::h264: return "";
    case VideoCodecChoice::hevc: return " HEVC";
    case VideoCodecChoice::proRes422: return " ProRes";
    }
    return "";
}

/// A name that cannot be looked at is neither free nor taken: the next one would be no better, and so on for ever.
bool isTaken(fs::path const& file) {
    std::error_code code;
    auto const type = fs::symlink_status(file, code).type();
    if (type == fs::file_type::none) throw FileError::writing(file, code.value());
    return type != fs::file_type::not_found;
}

/// "Tour 2.mp4"; the stem is cut where the name would be longer than the taken one, which its file system takes.
fs::path numbered(fs::path const& file, std::uint64_t number) {
    auto const stem = file.stem().string();
    auto const ending = fmt::format(" {}{}", number, file.extension().string());
    auto const most = std::max(file.filename().string().size(), certainNameLength);
    auto const left = most - std::min(most, ending.size());
    auto candidate = file;
    return candidate.replace_filename(std::string(wholeCharacters(stem, left)) + ending);
}

}

std::string fileNamePart(std::string_view text) {
    std::string part(trimmed(wholeCharacters(trimmed(text), longestNamePart)));
    if (part.empty()) return "Export";
    auto const isRefused = [](unsigned char c) { return c == '/' || c == ':' || c < 0x20 || c == 0x7F; };
    std::ranges::replace_if(part, isRefused, '-');
    if (part.starts_with('.')) part.front() = '-';
    return part;
}

namespace {

/// Films of documents may be longer than any file.
std::int64_t wholeBytes(double bytes) {
    constexpr double most = 1e18;
    return bytes > 0 ? static_cast<std::int64_t>(std::min(bytes, most)) : 0;
}

}

std::int64_t estimatedFileSize(ExportSettings const& settings, double duration) {
    double const seconds = std::max(duration, 0.0);
    if (settings.container == ExportContainer::gif) {
        double const bytesPerSecond = static_cast<double>(settings.size.width) *
                                      static_cast<double>(settings.size.height) * static_cast<double>(settings.fps) *
                                      0.08;
        return wholeBytes(seconds * bytesPerSecond);
    }
    constexpr double audioBytesPerSecond = 24'000;
    constexpr double containerBytes = 131'072;
    double const picture = seconds * static_cast<double>(settings.bitrate()) / 8;
    double const audio = settings.includesAudio ? seconds * audioBytesPerSecond : 0;
    return wholeBytes(picture + audio + containerBytes);
}

std::string fileSizeText(std::int64_t bytes) {
    constexpr std::array<std::string_view, 5> units{"bytes", "KB", "MB", "GB", "TB"};
    double size = static_cast<double>(std::max<std::int64_t>(bytes, 0));
    std::size_t unit = 0;
    for (; size >= 999.5 && unit + 1 < units.size(); ++unit) size /= 1000;
    return fmt::format("{:.{}f} {}", size, unit > 0 && size < 9.95 ? 1 : 0, units[unit]);
}

std::string suggestedFileName(ExportSettings const& settings, std::string_view projectName) {
    auto name = fileNamePart(projectName);
    name += ' ';
    name += qualityLabel(settings.size);
    if (settings.container != ExportContainer::gif) name += codecSuffix(settings.codec);
    return name;
}

fs::path unusedFile(fs::path const& file) {
    auto candidate = file;
    for (std::uint64_t number = 2; isTaken(candidate); ++number) candidate = numbered(file, number);
    return candidate;
}

fs::path commitUnderUnusedName(PendingFile& pending, fs::path const& wanted) {
    while (true) {
        auto const file = unusedFile(wanted);
        if (pending.commitUnlessTaken(file)) return file;
    }
}

}
