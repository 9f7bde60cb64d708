#include <TavaroVision/Scanning/Private/ScreenClassifier.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <optional>
#include <string_view>

namespace tavaro {

namespace {

constexpr double tightGap = 0.55; // of a letter's height: no room for a space
constexpr std::size_t longestLabel = 60;
constexpr std::string_view joints = "-._:/@="; // inside of values, often read with a space beside them

/// What keys of services begin with. One letter read in the other case, or as one that looks like it, would hide them.
constexpr std::array<std::string_view, 24> prefixes{
    "sk_live_",    "sk_test_", "rk_live_", "rk_test_", "pk_live_", "pk_test_", "sk-proj-",    "sk-ant-",
    "sk-svcacct-", "ghp_",     "gho_",     "ghs_",     "ghu_",     "ghr_",     "github_pat_", "glpat-",
    "xoxb-",       "xoxp-",    "npm_",     "pypi-",    "whsec_",   "shpat_",   "dop_v1_",     "AKIA"};

bool isTokenCharacter(char c) {
    return (c >= '0' && c <= '9') || ((c | 32) >= 'a' && (c | 32) <= 'z') ||
           std::string_view("+/=_-.@~:").find(c) != std::string_view::npos;
}

char folded(char c) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c | 32);
    if (c == '1' || c == 'i' || c == '|') return 'l';
    return c == '0' ? 'o' : c;
}

bool isAlphanumeric(char c) { return (c >= '0' && c <= '9') || ((c | 32) >= 'a' && (c | 32) <= 'z'); }

/// Prefixes as services write them, where what was read differs by case and look-alikes only.
void mendPrefixes(std::string& text) {
    for (auto const prefix : prefixes) {
        auto const isPrefix = [](char a, char b) { return folded(a) == folded(b); };
        for (auto at = text.begin(); at != text.end();) {
            at = std::search(at, text.end(), prefix.begin(), prefix.end(), isPrefix);
            if (at == text.end()) break;
            if (at == text.begin() || !isAlphanumeric(at[-1])) std::ranges::copy(prefix, at);
            ++at;
        }
    }
}

/// Strokes of a field's edge are none.
bool isValue(std::string_view text) {
    return std::ranges::count_if(text, isAlphanumeric) >= 2 || text.starts_with("--");
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
    enum class Spaces { all, whereThereIsRoom, notAtJoints };

    LineText(PlacedLine const& line, Spaces spaces) : line_(line) {
        for (std::size_t i = 0; i < line.words.size(); ++i) {
            if (hasSpace(i, spaces)) text_ += ' ';
            starts_.push_back(text_.size());
            text_ += line.words[i].text;
        }
        if (spaces != Spaces::all) blankBorders();
        mendPrefixes(text_);
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

    bool hasSpace(std::size_t word, Spaces spaces) const {
        if (word == 0) return false;
        if (spaces == Spaces::all) return true;
        if (isTight(word)) return false;
        auto const &before = line_.words[word - 1].text, &after = line_.words[word].text;
        bool const isJoint = joints.find(before.back()) != joints.npos || joints.find(after.front()) != joints.npos;
        return spaces == Spaces::whereThereIsRoom || !isJoint;
    }

    /// The edges of fields are read as strokes, before all words or as words of their own: then a value follows.
    void blankBorders() {
        for (std::size_t i = 0; i < starts_.size(); ++i) {
            auto const& word = line_.words[i].text;
            if (isBorder(word)) {
                text_.replace(starts_[i], word.size(), word.size(), ' ');
                if (i > 0) text_[starts_[i]] = ':';
            } else if (i == 0) {
                for (std::string_view const border : {"|", "(", "[", "‘", "'"}) {
                    if (word.starts_with(border)) text_.replace(0, border.size(), border.size(), ' ');
                }
            }
        }
    }

    static bool isBorder(std::string_view word) {
        constexpr std::string_view strokes = "|([{'\"=_-~.";
        return std::ranges::all_of(word, [&](char c) { return c < 0 || strokes.find(c) != strokes.npos; });
    }

    bool isTight(std::size_t word) const {
        auto const &before = line_.words[word - 1], &after = line_.words[word];
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
        using enum LineText::Spaces;
        for (auto const spaces : {all, whereThereIsRoom, notAtJoints}) {
            LinesAbove above;
            for (auto const line : column) {
                LineText const text(lines_[line], spaces);
                keep(line, text, classifier_.matches(text.text(), above));
            }
        }
    }

    void readBeside(std::size_t label, std::size_t value) {
        LineText const left(lines_[label], LineText::Spaces::whereThereIsRoom);
        LineText const right(lines_[value], LineText::Spaces::whereThereIsRoom);
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
            if (!isValue(std::string_view(text.text()).substr(match.start, match.length))) continue;
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
