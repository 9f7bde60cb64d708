#include <TavaroCore/Export/ExportFile.h>

#include <TavaroCore/Export/ExportSettings.h>
#include <TavaroCore/Files/PendingFile.h>

#include <algorithm>
#include <array>

#include <fmt/format.h>

namespace tavaro {

namespace {

constexpr std::size_t longestProjectName = 180; // bytes; file systems take 255

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

std::string fileNamePart(std::string_view projectName) {
    auto name = trimmed(projectName);
    if (name.size() > longestProjectName) {
        auto end = longestProjectName;
        while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80) --end; // whole characters only
        name = trimmed(name.substr(0, end));
    }
    if (name.empty()) return "Export";
    std::string part{name};
    std::ranges::replace_if(
        part, [](char c) { return c == '/' || c == ':' || c == '\0'; }, '-');
    return part;
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

}

std::int64_t estimatedFileSize(ExportSettings const& settings, double duration) {
    double const seconds = std::max(duration, 0.0);
    if (settings.container == ExportContainer::gif) {
        double const bytesPerSecond = static_cast<double>(settings.size.width) *
                                      static_cast<double>(settings.size.height) * static_cast<double>(settings.fps) *
                                      0.08;
        return static_cast<std::int64_t>(seconds * bytesPerSecond);
    }
    constexpr double audioBytesPerSecond = 24'000;
    constexpr double containerBytes = 131'072;
    double const picture = seconds * static_cast<double>(settings.bitrate()) / 8;
    double const audio = settings.includesAudio ? seconds * audioBytesPerSecond : 0;
    return static_cast<std::int64_t>(picture + audio + containerBytes);
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

std::filesystem::path unusedFile(std::filesystem::path const& file) {
    std::error_code ignored;
    auto const isTaken = [&](std::filesystem::path const& candidate) {
        return std::filesystem::symlink_status(candidate, ignored).type() != std::filesystem::file_type::not_found;
    };
    if (!isTaken(file)) return file;
    auto const stem = file.stem().string();
    for (std::uint64_t number = 2;; ++number) {
        auto candidate = file;
        candidate.replace_filename(stem + " " + std::to_string(number) + file.extension().string());
        if (!isTaken(candidate)) return candidate;
    }
}

std::filesystem::path commitUnderUnusedName(PendingFile& pending, std::filesystem::path const& wanted) {
    while (true) {
        auto const file = unusedFile(wanted);
        if (pending.commitUnlessTaken(file)) return file;
    }
}

}
