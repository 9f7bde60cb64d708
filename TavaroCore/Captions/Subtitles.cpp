#include <TavaroCore/Captions/Subtitles.h>

#include <TavaroCore/Captions/SpokenText.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fmt/format.h>

namespace tavaro {

namespace {

constexpr double latest = 1e10; // seconds; a document that says more is wrong

struct WrittenCue {
    std::int64_t start = 0, end = 0; // milliseconds
    std::string text;
};

std::int64_t milliseconds(double seconds) {
    return std::isfinite(seconds) ? std::llround(std::clamp(seconds, 0.0, latest) * 1000) : 0;
}

/// The text's lines without empty ones, which would end the cue.
std::string lines(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        auto const end = std::min(text.find_first_of("\r\n"), text.size());
        auto const line = trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.empty()) continue;
        if (!result.empty()) result += '\n';
        result += line;
    }
    return result;
}

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

std::vector<WrittenCue> writtenCues(std::span<CaptionCue const> cues, double offset) {
    std::vector<WrittenCue> result;
    for (auto const& cue : cues) {
        auto text = lines(cue.text);
        if (text.empty()) continue;
        auto const start = milliseconds(cue.start + offset), end = milliseconds(cue.range().end() + offset);
        result.push_back({start, std::max(start, end), std::move(text)});
    }
    std::stable_sort(result.begin(), result.end(), [](auto const& a, auto const& b) { return a.start < b.start; });
    return result;
}

std::string timecode(std::int64_t time, char point) {
    return fmt::format("{:02}:{:02}:{:02}{}{:03}", time / 3'600'000, time / 60'000 % 60, time / 1000 % 60, point,
                       time % 1000);
}

}

std::string subRipText(std::span<CaptionCue const> cues, double offset) {
    std::string result;
    std::size_t number = 0;
    for (auto& [start, end, text] : writtenCues(cues, offset)) {
        replaceAll(text, "-->", "→");
        result += fmt::format("{}\n{} --> {}\n{}\n\n", ++number, timecode(start, ','), timecode(end, ','), text);
    }
    return result;
}

std::string webVTTText(std::span<CaptionCue const> cues, double offset) {
    std::string result = "WEBVTT\n\n";
    for (auto& [start, end, text] : writtenCues(cues, offset)) {
        replaceAll(text, "&", "&amp;");
        replaceAll(text, "<", "&lt;");
        replaceAll(text, ">", "&gt;");
        result += fmt::format("{} --> {}\n{}\n\n", timecode(start, '.'), timecode(end, '.'), text);
    }
    return result;
}

}
