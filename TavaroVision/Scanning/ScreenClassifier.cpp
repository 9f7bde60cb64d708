#include <TavaroVision/Scanning/Private/ScreenClassifier.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <string_view>

namespace tavaro {

namespace {

constexpr double tightGap = 0.3; // of a letter's height: no room for a space
constexpr std::size_t longestLabel = 60;

bool isTokenCharacter(char c) {
    return (c >= '0' && c <= '9') || ((c | 32) >= 'a' && (c | 32) <= 'z') ||
           std::string_view("+/=_-.@~").find(c) != std::string_view::npos;
}

bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

/// About how wide a letter is beside others of a proportional font.
double breadthOf(char c) {
    if (std::string_view("iljI.,:;'|!()[]").find(c) != std::string_view::npos) return 0.5;
    if (std::string_view("ftr1-\"/").find(c) != std::string_view::npos) return 0.7;
    if (std::string_view("mwMW@%").find(c) != std::string_view::npos) return 1.5;
    return c >= 'A' && c <= 'Z' ? 1.2 : 1;
}

/// The words of a line as one text, and where its bytes are.
class LineText {
public:
    enum class Spaces { all, whereThereIsRoom };

    LineText(PlacedLine const& line, Spaces spaces) : line_(line) {
        for (std::size_t i = 0; i < line.words.size(); ++i) {
            if (i > 0 && (spaces == Spaces::all || !isTight(i))) text_ += ' ';
            starts_.push_back(text_.size());
            text_ += line.words[i].text;
        }
    }

    std::string const& text() const { return text_; }

    /// A value whose end was misread goes on to the end of its word.
    std::size_t wordEnd(std::size_t end) const {
        if (end >= text_.size() || end == 0 || text_[end] == ' ') return end;
        constexpr std::string_view closing = "\"'`,;&<>()[]{}@/\\";
        if (closing.find(text_[end]) != closing.npos) return end;
        return std::min(text_.find(' ', end), text_.size());
    }

    int leftOf(std::size_t start) const {
        auto const word = wordAt(start);
        return edge(word, start - starts_[word], Side::left);
    }
    int rightOf(std::size_t end) const {
        auto const word = wordAt(end - 1);
        return edge(word, end - starts_[word], Side::right);
    }

private:
    enum class Side { left, right };

    bool isTight(std::size_t word) const {
        auto const &before = line_.words[word - 1], &after = line_.words[word];
        if (before.text.empty() || after.text.empty()) return false;
        return after.box.x - before.box.right() < tightGap * line_.letterHeight &&
               isTokenCharacter(before.text.back()) && isTokenCharacter(after.text.front());
    }

    std::size_t wordAt(std::size_t byte) const {
        auto const after = std::ranges::upper_bound(starts_, byte);
        return static_cast<std::size_t>(after - starts_.begin()) - 1;
    }

    /// Where a letter begins or ends: as if all were of one width, or as they are in other fonts, whichever is further
    /// out.
    int edge(std::size_t index, std::size_t bytes, Side side) const {
        auto const& word = line_.words[index];
        bytes = std::min(bytes, word.text.size());
        if (bytes == 0) return word.box.x;
        if (bytes == word.text.size()) return word.box.right();
        double even = 0, evenAll = 0, uneven = 0, unevenAll = 0;
        for (std::size_t i = 0; i < word.text.size(); ++i) {
            if (isContinuation(word.text[i])) continue;
            auto const breadth = breadthOf(word.text[i]);
            even += i < bytes ? 1 : 0;
            uneven += i < bytes ? breadth : 0;
            evenAll += 1;
            unevenAll += breadth;
        }
        auto const a = even / evenAll, b = uneven / unevenAll;
        auto const part = side == Side::left ? std::min(a, b) : std::max(a, b);
        return word.box.x + static_cast<int>(std::lround(part * word.box.width));
    }

    PlacedLine const& line_;
    std::string text_;
    std::vector<std::size_t> starts_;
};

bool isOnRow(PixelBox const& a, PixelBox const& b) {
    int const shared = std::min(a.bottom(), b.bottom()) - std::max(a.y, b.y);
    return 5 * shared >= 3 * std::min(a.height, b.height);
}

bool goesOn(PlacedLine const& above, PlacedLine const& below) {
    auto const &a = above.box, &b = below.box;
    auto const height = std::max(above.letterHeight, below.letterHeight);
    bool const isAlike = 2 * std::min(above.letterHeight, below.letterHeight) >= height;
    bool const isBelow = b.y >= a.y + a.height / 2 && b.y - a.bottom() <= 3 * height;
    return isAlike && isBelow && std::min(a.right(), b.right()) > std::max(a.x, b.x) && !isOnRow(a, b);
}

/// The findings of a screen while they are gathered.
class Gathering {
public:
    Gathering(SensitiveTextClassifier& classifier, std::span<PlacedLine const> lines)
        : classifier_(classifier)
        , lines_(lines) {}

    void readColumn(std::vector<std::size_t> const& column) {
        LinesAbove above, aboveTight;
        for (auto const line : column) {
            LineText const text(lines_[line], LineText::Spaces::all);
            LineText const tight(lines_[line], LineText::Spaces::whereThereIsRoom);
            keep(line, text, classifier_.matches(text.text(), above));
            if (tight.text() == text.text() && above.expected == aboveTight.expected) continue;
            keep(line, tight, classifier_.matches(tight.text(), aboveTight));
        }
    }

    void readBeside(std::size_t label, std::size_t value) {
        LineText const left(lines_[label], LineText::Spaces::all), right(lines_[value], LineText::Spaces::all);
        if (left.text().size() > longestLabel) return;
        LinesAbove above;
        classifier_.matches(left.text(), above);
        using enum LinesAbove::Expected;
        auto const expected = above.expected;
        if (expected != password && expected != phrase && expected != secret && expected != code) return;
        keep(value, right, classifier_.matches(right.text(), above));
    }

    std::vector<PrivateText> take() {
        std::ranges::sort(found_, {}, [](PrivateText const& one) { return std::pair(one.line, one.left); });
        return std::move(found_);
    }

private:
    void keep(std::size_t line, LineText const& text, std::vector<SensitiveMatch> const& matches) {
        for (auto const& match : matches) {
            if (match.length == 0) continue;
            auto const end = match.kind == SensitiveKind::email || match.kind == SensitiveKind::phone ||
                                     match.kind == SensitiveKind::card
                                 ? match.end()
                                 : text.wordEnd(match.end());
            add({line, match.kind, match.label, text.text().substr(match.start, end - match.start),
                 text.leftOf(match.start), text.rightOf(end)});
        }
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
    std::span<PlacedLine const> lines_;
    std::vector<PrivateText> found_;
};

std::optional<std::size_t> lineBefore(std::span<PlacedLine const> lines, std::size_t line) {
    std::optional<std::size_t> nearest;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (i == line || lines[i].words.empty() || !isOnRow(lines[i].box, lines[line].box)) continue;
        if (lines[i].box.right() > lines[line].box.x + lines[line].letterHeight) continue;
        if (!nearest || lines[i].box.right() > lines[*nearest].box.right()) nearest = i;
    }
    return nearest;
}

}

std::vector<std::vector<std::size_t>> readingOrder(std::span<PlacedLine const> lines) {
    std::vector<std::size_t> order(lines.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::sort(order, {}, [&](std::size_t i) { return std::pair(lines[i].box.y, lines[i].box.x); });
    std::vector<std::vector<std::size_t>> columns;
    for (auto const line : order) {
        if (lines[line].words.empty()) continue;
        std::vector<std::size_t>* nearest = nullptr;
        auto const distance = [&](std::vector<std::size_t> const& column) {
            auto const &above = lines[column.back()].box, &below = lines[line].box;
            return std::pair(below.y - above.bottom(), std::abs(above.x - below.x));
        };
        for (auto& column : columns) {
            if (!goesOn(lines[column.back()], lines[line])) continue;
            if (!nearest || distance(column) < distance(*nearest)) nearest = &column;
        }
        if (nearest) {
            nearest->push_back(line);
        } else {
            columns.push_back({line});
        }
    }
    return columns;
}

std::vector<PrivateText> ScreenClassifier::privateTexts(std::span<PlacedLine const> lines) {
    Gathering gathering(classifier_, lines);
    for (auto const& column : readingOrder(lines)) gathering.readColumn(column);
    for (std::size_t line = 0; line < lines.size(); ++line) {
        if (lines[line].words.empty()) continue;
        if (auto const label = lineBefore(lines, line)) gathering.readBeside(*label, line);
    }
    return gathering.take();
}

}
