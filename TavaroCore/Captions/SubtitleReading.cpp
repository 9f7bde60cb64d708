#include <TavaroCore/Captions/Subtitles.h>

#include <TavaroCore/Captions/Private/SharedTime.h>
#include <TavaroCore/Captions/Private/SubtitleMarkup.h>
#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Files/TextEncoding.h>

#include <algorithm>
#include <cstdint>
#include <fmt/format.h>
#include <optional>

namespace tavaro {

namespace {

constexpr std::string_view arrow = "-->";
constexpr std::size_t shownLength = 60; // bytes of a line that a sentence quotes

std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        auto const end = text.find_first_of("\r\n");
        lines.push_back(trimmed(text.substr(0, end)));
        if (end == std::string_view::npos) break;
        bool const isPair = text.substr(end, 2) == "\r\n";
        text.remove_prefix(end + (isPair ? 2 : 1));
    }
    return lines;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isNumber(std::string_view line) { return !line.empty() && std::all_of(line.begin(), line.end(), isDigit); }

/// Takes up to `most` digits off the text; none without a digit, or with more of them.
std::optional<std::int64_t> takeNumber(std::string_view& text, std::size_t most) {
    std::size_t digits = 0;
    std::int64_t value = 0;
    for (; digits < text.size() && isDigit(text[digits]); ++digits) {
        if (digits == most) return std::nullopt;
        value = value * 10 + (text[digits] - '0');
    }
    if (digits == 0) return std::nullopt;
    text.remove_prefix(digits);
    return value;
}

/// Takes a time off the text: hours (which may be missing), minutes, seconds, and a fraction of up to nine digits after
/// a comma or a point.
std::optional<double> takeTime(std::string_view& text) {
    std::int64_t total = 0;
    int parts = 0;
    for (;; ++parts) {
        auto const part = takeNumber(text, 6);
        if (!part || parts == 3 || (parts > 0 && *part > 59)) return std::nullopt;
        total = total * 60 + *part;
        if (!text.starts_with(':')) break;
        text.remove_prefix(1);
    }
    if (parts == 0) return std::nullopt; // no minutes
    if (!text.starts_with(',') && !text.starts_with('.')) return static_cast<double>(total);
    text.remove_prefix(1);
    auto const before = text.size();
    auto const fraction = takeNumber(text, 9);
    if (!fraction) return std::nullopt;
    double scale = 1;
    for (auto digits = before - text.size(); digits > 0; --digits) scale *= 10;
    return static_cast<double>(total) + static_cast<double>(*fraction) / scale;
}

/// "00:00:01,000 --> 00:00:02,500", with anything behind it.
std::optional<TimeRange> timeSpan(std::string_view line) {
    auto const start = takeTime(line);
    line = trimmed(line);
    if (!start || !line.starts_with(arrow)) return std::nullopt;
    line = trimmed(line.substr(arrow.size()));
    auto const end = takeTime(line);
    if (!end || (!line.empty() && line.front() != ' ' && line.front() != '\t')) return std::nullopt;
    return TimeRange{*start, *end - *start};
}

std::string quoted(std::string_view line) { return fmt::format("“{}”", excerpt(line, shownLength)); }

/// Lines of a file, and the captions found in them.
class Reader {
public:
    explicit Reader(std::string_view text) : lines_(linesOf(text)), isWebVTT_(isHeader()) {}

    std::vector<CaptionCue> read() {
        for (std::size_t at = isWebVTT_ ? 1 : 0; at < lines_.size();) {
            if (isWebVTT_ && isBlock(lines_[at])) {
                while (at < lines_.size() && !lines_[at].empty()) ++at;
            } else if (lines_[at].find(arrow) != std::string_view::npos) {
                at = readCue(at);
            } else {
                ++at; // a number, a name, a blank line, or text in front of the first caption
            }
        }
        if (cues_.empty())
            throw SubtitleError(SubtitleError::Kind::noCaptions, 1,
                                "There are no captions in it; each begins with its times, as in "
                                "“00:00:01,000 --> 00:00:02,500”, with its text below.");
        std::stable_sort(cues_.begin(), cues_.end(), [](auto const& a, auto const& b) { return a.start < b.start; });
        return std::move(cues_);
    }

private:
    bool isHeader() const {
        return !lines_.empty() && lines_[0].starts_with("WEBVTT") &&
               (lines_[0].size() == 6 || lines_[0][6] == ' ' || lines_[0][6] == '\t');
    }

    /// What holds no caption.
    static bool isBlock(std::string_view line) {
        auto const name = line.substr(0, line.find_first_of(" \t"));
        return name == "NOTE" || name == "STYLE" || name == "REGION";
    }

    [[noreturn]] void fail(std::size_t at, std::string const& why) const {
        throw SubtitleError(SubtitleError::Kind::badTime, at + 1, why);
    }

    TimeRange rangeAt(std::size_t at) const {
        auto const range = timeSpan(lines_[at]);
        if (!range)
            fail(at, fmt::format("{} gives no times; they read “00:00:01,000 --> 00:00:02,500”.", quoted(lines_[at])));
        if (range->duration < 0) fail(at, fmt::format("{} ends before it begins.", quoted(lines_[at])));
        return *range;
    }

    /// Behind the last line of the text that begins there.
    std::size_t textEnd(std::size_t at) const {
        std::size_t end = at;
        while (end < lines_.size() && lines_[end].find(arrow) == std::string_view::npos) {
            // SubRip files are found with blank lines inside a text; in WebVTT a blank line ends the cue.
            if (isWebVTT_ && lines_[end].empty()) return end;
            ++end;
        }
        bool const isNumbered = end < lines_.size() && end > at && isNumber(lines_[end - 1]);
        return isNumbered ? end - 1 : end;
    }

    std::size_t readCue(std::size_t at) {
        CaptionCue cue;
        auto const range = rangeAt(at);
        cue.start = range.start;
        cue.duration = range.duration;
        auto const end = textEnd(at + 1);
        for (std::size_t i = at + 1; i < end; ++i) {
            auto const line = isWebVTT_ ? withoutWebVTTMarkup(lines_[i]) : withoutSubRipMarkup(lines_[i]);
            auto const shown = trimmed(line);
            if (shown.empty()) continue;
            if (!cue.text.empty()) cue.text += '\n';
            cue.text += shown;
        }
        if (!cue.text.empty()) {
            cue.words = wordsByLength(cue.range(), writtenWords(cue.text));
            cues_.push_back(std::move(cue));
        }
        return end;
    }

    std::vector<std::string_view> const lines_;
    bool const isWebVTT_;
    std::vector<CaptionCue> cues_;
};

}

SubtitleError::SubtitleError(Kind kind, std::size_t line, std::string const& sentence)
    : Error(fmt::format("Line {}: {}", line, sentence))
    , kind(kind)
    , line(line) {}

SubtitleError::SubtitleError(SubtitleError const& error, std::string const& place)
    : Error(fmt::format("{}: {}", place, error.what()))
    , kind(error.kind)
    , line(error.line) {}

std::vector<CaptionCue> readSubtitles(std::string_view bytes) {
    auto const text = decodedText(bytes);
    return Reader(text).read();
}

}
