#include <TavaroVision/Scanning/Private/ScreenClassifier.h>

#include <TavaroCore/Privacy/Characters.h>
#include <TavaroVision/Scanning/Private/KeyFileLines.h>
#include <TavaroVision/Scanning/Private/MisreadKeys.h>
#include <TavaroVision/Scanning/Private/ReadPieces.h>
#include <TavaroVision/Scanning/Private/ReadingOrder.h>
#include <TavaroVision/Scanning/Private/WrappedLines.h>

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <string_view>

namespace tavaro {

namespace {

constexpr std::size_t longestLabel = 60;

/// Strokes of a field's edge are none.
bool isValue(std::string_view text) {
    return std::ranges::count_if(text, isAlphanumeric) >= 2 || text.starts_with("--");
}

bool isNumberOrAddress(SensitiveKind kind) {
    return kind == SensitiveKind::email || kind == SensitiveKind::phone || kind == SensitiveKind::card;
}

/// A line that seems to be of a key file, and where its part is of it.
struct KeyLine {
    ScreenText text;
    std::size_t line = 0;
    ReadPiece body = {};

    /// As the last one may be.
    bool isShort() const {
        constexpr std::size_t shortest = 60;
        return body.size() < shortest;
    }
};

/// The findings of a screen while they are gathered.
class Gathering {
public:
    Gathering(SensitiveTextClassifier& classifier, std::set<SensitiveKind> const& kinds,
              std::span<PlacedLine const> lines)
        : classifier_(classifier)
        , kinds_(kinds)
        , lines_(lines) {}

    void readColumn(std::vector<std::size_t> const& column) {
        RightEdge const edge(lines_, column);
        for (auto const& style : styles) readColumn(column, edge, style);
        readKeyBlocks(column);
        for (std::size_t i = 0; i + 1 < column.size(); ++i) i = readWrapped(column, i, edge);
    }

    void readBeside(std::size_t label, std::size_t value) {
        for (auto const spaces : {Spaces::all, Spaces::whereThereIsRoom}) {
            ReadingStyle const style{.spaces = spaces};
            ScreenText const left(lines_, std::span(&label, 1), style), right(lines_, std::span(&value, 1), style);
            if (left.text().size() > longestLabel) return;
            LinesAbove above;
            classifier_.matches(left.text(), above);
            using enum LinesAbove::Expected;
            auto const expected = above.expected;
            if (expected == password || expected == phrase || expected == secret || expected == code)
                keep(right, classifier_.matches(right.text(), above), Part::any);
            readNumberBeside(label, value, style);
        }
    }

    std::vector<PrivateText> take() {
        std::ranges::sort(found_, {}, [](PrivateText const& one) { return std::pair(one.line, one.left); });
        return std::move(found_);
    }

private:
    using Spaces = ReadingStyle::Spaces;
    using Mending = ReadingStyle::Mending;
    using Wraps = ReadingStyle::Wraps;
    enum class Part { any, overWraps, overEdge, betweenSigns, numbersOfLast };

    static constexpr std::size_t mostOfWrapped = 12; // letters of a line of a key file that wraps

    static constexpr std::array<ReadingStyle, 4> styles{{{Spaces::all, Mending::prefixes},
                                                         {Spaces::all, Mending::everything},
                                                         {Spaces::whereThereIsRoom, Mending::everything},
                                                         {Spaces::notAtJoints, Mending::everything}}};

    void readColumn(std::vector<std::size_t> const& column, RightEdge const& edge, ReadingStyle const& style) {
        LinesAbove above;
        for (std::size_t i = 0; i < column.size(); ++i) {
            ScreenText const text(lines_, std::span(column).subspan(i, 1), style);
            bool const mayGoOn = i == 0 || edge.isReachedBy(lines_[column[i - 1]]);
            if (above.expected == LinesAbove::Expected::restOfSecret && !mayGoOn) above = {};
            auto const before = above;
            keep(text, classifier_.matches(text.text(), above), Part::any);
            bool const wasPublic = before.expected == LinesAbove::Expected::bodyOfPublicFile;
            if (wasPublic && above.expected != before.expected && isNearlyBase64(text.text())) above = before;
            if (style.mending != Mending::everything) continue;
            keepKeys(text, Part::any);
            auto const next = std::span(column).subspan(i + 1, i + 1 < column.size() ? 1 : 0);
            if (before.expected == LinesAbove::Expected::bodyOfKeyFile && above.expected != before.expected &&
                keepKeyFile(text, ScreenText(lines_, next, style).text()))
                above = before;
        }
    }

    /// From a line that may go on below it to the last that it may go on to, which is returned.
    std::size_t readWrapped(std::vector<std::size_t> const& column, std::size_t first, RightEdge const& edge) {
        constexpr std::size_t mostLines = 6;
        auto last = first;
        while (last + 1 < column.size() && last - first + 1 < mostLines &&
               wraps(lines_[column[last]], lines_[column[last + 1]], edge))
            ++last;
        if (last == first) return first;
        auto const wrapped = std::span(column).subspan(first, last - first + 1);
        auto const part = edge.isWindows ? Part::overEdge : Part::overWraps;
        constexpr std::array<ReadingStyle, 2> read{{{Spaces::whereThereIsRoom, Mending::everything, Wraps::insideWords},
                                                    {Spaces::all, Mending::everything, Wraps::atSpaces}}};
        for (auto const& style : read) {
            ScreenText const text(lines_, wrapped, style);
            keep(text, classifier_.matches(text.text()), part);
            if (style.wraps == Wraps::insideWords) keepKeys(text, part);
        }
        return last - 1;
    }

    /// "Phone  555 0199", "Card number  41111111…": what only its label says.
    void readNumberBeside(std::size_t label, std::size_t value, ReadingStyle const& style) {
        constexpr int fewestDigits = 7;
        std::array const both{label, value};
        ScreenText const text(lines_, both, style);
        if (std::ranges::count_if(text.text(), isDigit) < fewestDigits) return;
        keep(text, classifier_.matches(text.text()), Part::numbersOfLast);
    }

    void keep(ScreenText const& text, std::vector<SensitiveMatch> const& matches, Part part) {
        for (auto const& match : matches) {
            auto const value = std::string_view(text.text()).substr(match.start, match.length);
            bool const isSecret = match.kind == SensitiveKind::secret;
            if (!isValue(value) || (isSecret && text.isSentence(match.start, match.end()))) continue;
            bool const isWhole = isNumberOrAddress(match.kind);
            if (part == Part::numbersOfLast && !isWhole) continue;
            bool const isWord = match.kind == SensitiveKind::apiKey || match.kind == SensitiveKind::token ||
                                match.kind == SensitiveKind::email;
            bool const isBetween = part != Part::any && isPasswordOfAddress(text.text(), match.start, match.end());
            keep(text, match.kind, match.label, isWord ? text.wordStart(match.start) : match.start,
                 isWhole ? match.end() : text.wordEnd(match.end()), isBetween ? Part::betweenSigns : part);
        }
    }

    /// Key files whose headers are not seen, by lines of which letters were misread.
    void readKeyBlocks(std::vector<std::size_t> const& column) {
        std::vector<KeyLine> block;
        bool isPublic = false;
        std::string above;
        for (auto const line : column) {
            KeyLine next{ScreenText(lines_, std::span(&line, 1), {.spaces = Spaces::whereThereIsRoom}), line};
            next.body = keyLineIn(next.text.text());
            bool const goesOn = !block.empty() && !block.back().isShort() && next.body.size() > 0 &&
                                isNextInFile(lines_[block.back().line], lines_[line]);
            if (!goesOn) {
                if (!isPublic) keepKeyBlock(block);
                block.clear();
                isPublic = announcesPublicFile(above);
            }
            above = next.text.text();
            if (goesOn || (next.body.size() > 0 && !next.isShort())) block.push_back(std::move(next));
        }
        if (!isPublic) keepKeyBlock(block);
    }

    /// Where one of the lines is known by itself, or there are several.
    void keepKeyBlock(std::vector<KeyLine> const& block) {
        constexpr std::size_t several = 3;
        constexpr auto kind = SensitiveKind::privateKey;
        bool const isKnown = std::ranges::any_of(found_, [&](PrivateText const& found) {
            return found.kind == kind && std::ranges::find(block, found.line, &KeyLine::line) != block.end();
        });
        if (!kinds_.contains(kind) || (!isKnown && block.size() < several)) return;
        for (auto const& [text, line, body] : block)
            keep(text, kind, std::string(displayName(kind)), body.start, body.end, Part::any);
    }

    /// A line inside of a key file of which a letter was misread, or beside another window; the end of one that wraps.
    /// Whether the file goes on.
    bool keepKeyFile(ScreenText const& text, std::string_view below) {
        auto const& line = text.text();
        bool const goesOn = below.starts_with("--") || isNearlyBase64(below) || !base64Words(below).empty();
        bool const isEnd = line.size() <= mostOfWrapped && std::ranges::all_of(line, isAlphanumeric) && goesOn;
        auto parts = base64Words(line);
        if (isEnd || isNearlyBase64(line)) parts = {line};
        for (auto const part : parts) {
            auto const start = static_cast<std::size_t>(part.data() - line.data());
            if (kinds_.contains(SensitiveKind::privateKey))
                keep(text, SensitiveKind::privateKey, std::string(displayName(SensitiveKind::privateKey)), start,
                     start + part.size(), Part::any);
        }
        return !parts.empty();
    }

    void keepKeys(ScreenText const& text, Part part) {
        forEachMisreadKey(text.text(), [&](SensitiveKind kind, std::size_t start, std::size_t end) {
            if (kinds_.contains(kind)) keep(text, kind, std::string(displayName(kind)), start, end, part);
        });
    }

    void keep(ScreenText const& text, SensitiveKind kind, std::string const& label, std::size_t start, std::size_t end,
              Part part) {
        auto const places = text.placesOf(start, end);
        bool const isWrapped = part == Part::overWraps || part == Part::overEdge;
        if (isWrapped && (isKnownBelow(places) || !isDivided(kind, places, part))) return;
        if (part == Part::numbersOfLast && places.size() != 1) return;
        for (auto const& place : places) add({place.line, kind, label, place.text, place.left, place.right});
    }

    /// Whether it is in one line only, or what is below is whole by itself and what is above it another thing.
    bool isKnownBelow(std::vector<ScreenText::Place> const& places) const {
        return places.size() < 2 ||
               std::all_of(places.begin() + 1, places.end(), [&](auto const& place) { return isCovered(place); });
    }

    /// "postgres://shop:…@db": both signs say where it begins and ends, whatever is in between.
    static bool isPasswordOfAddress(std::string_view text, std::size_t start, std::size_t end) {
        if (start == 0 || text[start - 1] != ':' || end >= text.size() || text[end] != '@') return false;
        auto const scheme = text.substr(0, start).rfind("://");
        return scheme != text.npos && text.find(' ', scheme) > start;
    }

    /// Whether it really is one thing in several lines. Behind a password there may be anything, where nothing says
    /// that the window ends there.
    static bool isDivided(SensitiveKind kind, std::vector<ScreenText::Place> const& places, Part part) {
        constexpr std::size_t longPart = 16; // letters, as what machines make
        auto const rest = std::span(places).subspan(1);
        if (isNumberOrAddress(kind)) return true;
        bool const isShort = places[0].text.size() < longPart && rest[0].text.size() < longPart;
        if (kind == SensitiveKind::secret && isShort && part != Part::overEdge) return false;
        return std::ranges::all_of(
            rest, [](auto const& place) { return isMixed(place.text) && std::ranges::any_of(place.text, isLetter); });
    }

    bool isCovered(ScreenText::Place const& place) const {
        return std::ranges::any_of(found_, [&](PrivateText const& found) {
            return found.line == place.line && found.left <= place.left && place.right <= found.right;
        });
    }

    /// Of two that overlap the longer one counts, and covers both.
    void add(PrivateText found) {
        for (auto& other : found_) {
            bool const overlaps = other.line == found.line && other.left < found.right && found.left < other.right;
            if (!overlaps) continue;
            auto const left = std::min(other.left, found.left), right = std::max(other.right, found.right);
            if (found.value.size() > other.value.size()) other = std::move(found);
            other.left = left;
            other.right = right;
            return;
        }
        found_.push_back(std::move(found));
    }

    SensitiveTextClassifier& classifier_;
    std::set<SensitiveKind> const& kinds_;
    std::span<PlacedLine const> lines_;
    std::vector<PrivateText> found_;
};

}

std::vector<PrivateText> ScreenClassifier::privateTexts(std::span<PlacedLine const> lines) {
    Gathering gathering(classifier_, kinds_, lines);
    for (auto const& column : readingOrder(lines)) gathering.readColumn(column);
    for (std::size_t line = 0; line < lines.size(); ++line) {
        if (lines[line].words.empty()) continue;
        if (auto const label = lineBefore(lines, line)) gathering.readBeside(*label, line);
    }
    return gathering.take();
}

}
