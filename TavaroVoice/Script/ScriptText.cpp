#include <TavaroVoice/Script/ScriptText.h>

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Files/TextEncoding.h>
#include <TavaroCore/Values/Timecode.h>
#include <TavaroVoice/Speaking/Private/SpokenText.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <fmt/format.h>

namespace tavaro {

namespace {

constexpr std::size_t mostLines = 10'000;
constexpr std::size_t longestLine = 10'000; // characters; no voice takes more at once
constexpr std::array<std::string_view, 3> dashes{"-", "–", "—"};

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isBlank(char c) { return c == ' ' || c == '\t'; }

bool skip(std::string_view& text, std::string_view what) {
    if (!text.starts_with(what)) return false;
    text.remove_prefix(what.size());
    return true;
}

/// Takes a number of `least` to `most` digits off the text.
std::optional<std::int64_t> takeNumber(std::string_view& text, std::size_t least, std::size_t most) {
    std::size_t digits = 0;
    std::int64_t value = 0;
    for (; digits < text.size() && digits < most && isDigit(text[digits]); ++digits)
        value = value * 10 + (text[digits] - '0');
    if (digits < least || (digits < text.size() && isDigit(text[digits]))) return std::nullopt;
    text.remove_prefix(digits);
    return value;
}

/// "0:03", "1:02:03.25"
std::optional<double> takeClock(std::string_view& text) {
    auto const first = takeNumber(text, 1, 6);
    if (!first) return std::nullopt;
    auto total = *first;
    int parts = 1;
    while (parts < 3 && text.size() > 1 && text[0] == ':' && isDigit(text[1])) {
        text.remove_prefix(1);
        auto const part = takeNumber(text, 2, 2);
        if (!part || *part > 59) return std::nullopt;
        total = total * 60 + *part;
        ++parts;
    }
    if (parts == 1) return std::nullopt;
    auto seconds = static_cast<double>(total);
    if (text.size() < 2 || (text[0] != '.' && text[0] != ',') || !isDigit(text[1])) return seconds;
    text.remove_prefix(1);
    auto const digits = text.size();
    auto const fraction = takeNumber(text, 1, 9);
    if (!fraction) return std::nullopt;
    double scale = 1;
    for (auto left = digits - text.size(); left > 0; --left) scale *= 10;
    return seconds + static_cast<double>(*fraction) / scale;
}

/// Takes the time that a line begins with off it, with its brackets, what it lasts until, and a dash before the text.
std::optional<double> takeTime(std::string_view& line) {
    auto rest = line;
    bool const isBracketed = skip(rest, "[") || skip(rest, "(");
    auto const time = takeClock(rest);
    if (!time) return std::nullopt;
    for (auto const dash : dashes) {
        auto until = rest;
        if (skip(until, dash) && takeClock(until)) rest = until;
    }
    if (isBracketed && !skip(rest, "]") && !skip(rest, ")")) return std::nullopt;
    bool const hasColon = skip(rest, ":");
    if (!rest.empty() && !isBlank(rest.front()) && !isBracketed && !hasColon) return std::nullopt;
    // Scripts of `scriptText` have two blanks, and then the text as it is.
    bool const isFarFromText = rest.size() > 1 && isBlank(rest[0]) && isBlank(rest[1]);
    rest = trimmed(rest);
    for (auto const dash : dashes) {
        auto text = rest;
        if (!isFarFromText && skip(text, dash) && (text.empty() || isBlank(text.front()))) rest = trimmed(text);
    }
    line = rest;
    return time;
}

/// Rows of "#" are rules between lines, though a voice would read them out.
bool hasText(std::string_view line) { return !bareText(line).empty() && canBeSaid(line); }

std::string onOneLine(std::string_view text) {
    std::string result;
    for (auto const word : writtenWords(text)) {
        if (!result.empty()) result += ' ';
        result += word;
    }
    return result;
}

class Reading {
public:
    std::vector<ScriptLine> read(std::string_view text) {
        while (!text.empty()) {
            auto const end = std::min(text.find_first_of("\r\n"), text.size());
            take(text.substr(0, end));
            text.remove_prefix(end);
            if (!skip(text, "\r\n") && !text.empty()) text.remove_prefix(1);
        }
        if (isTimed_.value_or(false)) return inOrder();
        return lines_.size() > 1 && paragraphs_.size() > 1 ? std::move(paragraphs_) : std::move(lines_);
    }

private:
    void take(std::string_view line) {
        auto rest = trimmed(line);
        if (rest.empty()) {
            isBehindBlank_ = true;
            return;
        }
        auto const time = isTimed_.value_or(true) ? takeTime(rest) : std::nullopt;
        if (!isTimed_) isTimed_ = time.has_value();
        if (*isTimed_)
            takeTimed(time, rest, isBlank(line.front()));
        else
            takePlain(rest);
        isBehindBlank_ = false;
    }

    void takeTimed(std::optional<double> time, std::string_view text, bool isIndented) {
        if (time) pending_ = time;
        if (!hasText(text)) return;
        if (!time && !pending_ && isIndented && !lines_.empty()) return append(lines_.back(), text);
        add(lines_, {pending_, onOneLine(text)});
        pending_.reset();
    }

    void takePlain(std::string_view text) {
        if (!hasText(text)) {
            isBehindBlank_ = true;
            return;
        }
        add(lines_, {{}, onOneLine(text)});
        if (isBehindBlank_ || paragraphs_.empty())
            add(paragraphs_, lines_.back());
        else
            append(paragraphs_.back(), text);
    }

    static void append(ScriptLine& line, std::string_view text) { line.text += ' ' + onOneLine(text); }

    static void add(std::vector<ScriptLine>& lines, ScriptLine line) {
        if (lines.size() == mostLines)
            throw ScriptTextError(ScriptTextError::Kind::tooManyLines,
                                  fmt::format("A script has {} lines at most.", mostLines));
        lines.push_back(std::move(line));
    }

    /// Lines without a time stay behind the line that they follow.
    std::vector<ScriptLine> inOrder() {
        std::vector<std::pair<double, std::size_t>> order;
        double time = 0;
        for (std::size_t i = 0; i < lines_.size(); ++i) order.emplace_back(time = lines_[i].time.value_or(time), i);
        std::ranges::stable_sort(order, {}, [](auto const& place) { return place.first; });
        std::vector<ScriptLine> result;
        for (auto const& [at, index] : order) result.push_back(std::move(lines_[index]));
        return result;
    }

    std::optional<bool> isTimed_; // whether times begin lines, once the first one is read
    std::optional<double> pending_;
    bool isBehindBlank_ = false;
    std::vector<ScriptLine> lines_;
    std::vector<ScriptLine> paragraphs_; // of a script without times
};

void expectSpeakable(std::vector<ScriptLine> const& lines) {
    if (lines.empty()) throw ScriptTextError(ScriptTextError::Kind::noText, "There is no text to speak in it.");
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].text.size() <= longestLine || lengthOf(lines[i].text) <= longestLine) continue;
        throw ScriptTextError(ScriptTextError::Kind::lineTooLong,
                              fmt::format("Its line {} to speak has more than {} characters, which is too long for a "
                                          "voice; break it into several.",
                                          i + 1, longestLine));
    }
}

}

std::string scriptText(std::span<ScriptLine const> lines) {
    std::string text;
    for (auto const& line : lines) {
        if (line.time) text += Timecode::format(*line.time, Timecode::Fraction::hundredths) + "  ";
        text += onOneLine(line.text) + '\n';
    }
    return text;
}

std::vector<ScriptLine> readScript(std::string_view bytes) {
    auto const text = decodedText(bytes);
    auto lines = Reading().read(text);
    expectSpeakable(lines);
    return lines;
}

}
