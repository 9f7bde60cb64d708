#include <TavaroVision/Scanning/Private/MisreadKeys.h>

#include <TavaroCore/Privacy/KeyFormats.h>
#include <TavaroVision/Scanning/Private/ReadPieces.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

namespace {

bool isJoint(char c) { return isAnyOf(c, "-_.~"); }

/// In a key there are no sentences that a mark would end.
char foldedInKey(char c) { return c == '!' ? 'l' : folded(c); }

/// What keys of a service begin with, and what follows.
struct Shape {
    std::string letters; // of the prefix, folded, without the joint at its end
    std::string exact;   // the same as it is written
    bool hasJoint = false;
    bool isUpperCase = false; // capitals and digits follow
    std::string joints;       // that may be in what follows
    std::size_t fewest = 0;   // letters that follow, a few less and more than the service has
    std::size_t most = 0;
};

/// From the format of a service's keys; none where they do not begin with letters of their own.
std::optional<Shape> shapeOf(std::string_view format) {
    Shape shape;
    auto const prefix = format.substr(0, format.find('%'));
    shape.hasJoint = !prefix.empty() && isJoint(prefix.back());
    shape.exact = prefix.substr(0, prefix.size() - (shape.hasJoint ? 1 : 0));
    for (char const c : shape.exact) shape.letters += foldedInKey(c);
    bool mayBeLonger = false;
    std::size_t letters = 0;
    shape.isUpperCase = true;
    for (auto at = prefix.size(); at < format.size(); ++at) {
        if (format[at] != '%') {
            shape.joints += format[at];
            ++letters;
            continue;
        }
        char const kind = format[++at];
        if (kind == '<') return std::nullopt;
        shape.isUpperCase &= kind == 'U';
        if (kind != 'd' && kind != 'h' && kind != 'l' && kind != 'w' && kind != 'U') shape.joints += "-_";
        if (kind == 'b' || kind == 't') shape.joints += "+/=.~";
        std::size_t count = 0;
        while (at + 1 < format.size() && isDigit(format[at + 1]))
            count = count * 10 + static_cast<std::size_t>(format[++at] - '0');
        letters += count;
        if (at + 1 < format.size() && format[at + 1] == '+') {
            mayBeLonger = true;
            ++at;
        }
    }
    constexpr std::size_t shortest = 14;
    shape.fewest = std::max(shortest, letters - std::min(letters, letters / 8 + 1));
    shape.most = mayBeLonger ? 1024 : letters + letters / 8 + 2;
    bool const isKnown = shape.letters.size() >= (shape.hasJoint ? 2 : 4);
    return isKnown && letters >= shortest ? std::optional(shape) : std::nullopt;
}

/// Of services whose keys have several prefixes, each by itself.
constexpr std::string_view more[] = {"ghp_%w36",         "gho_%w36",    "ghu_%w36",       "ghs_%w36",
                                     "ghr_%w36",         "sk-%u40+",    "sk-admin-%u40+", "sk-svcacct-%u40+",
                                     "xoxa-%d10+-%u20+", "whsec_%w32+", "pk_live_%w16+",  "pk_test_%w16+"};

std::vector<Shape> const& shapes() {
    static auto const all = [] {
        std::vector<Shape> shapes;
        auto const add = [&](std::string_view format) {
            if (auto shape = shapeOf(format)) shapes.push_back(std::move(*shape));
        };
        std::ranges::for_each(keyFormats(), add);
        std::ranges::for_each(more, add);
        return shapes;
    }();
    return all;
}

/// What one misreading leaves of the letters: how many bytes of the text stand for all of them, where at most one is
/// another, missing, or too many. 0 where more is wrong.
std::size_t lettersWithOneWrong(std::string_view text, std::string_view letters) {
    auto const agree = [&](std::size_t at, std::size_t from) {
        for (auto i = from; i < letters.size(); ++i, ++at) {
            if (at >= text.size() || foldedInKey(text[at]) != letters[i]) return false;
        }
        return true;
    };
    std::size_t same = 0;
    while (same < letters.size() && same < text.size() && foldedInKey(text[same]) == letters[same]) ++same;
    if (same == letters.size()) return same;
    if (agree(same + 1, same + 1)) return letters.size();
    if (agree(same, same + 1)) return letters.size() - 1;
    return agree(same + 1, same) ? letters.size() + 1 : 0;
}

/// The prefix as it is written, but for joints that are others or missing: bytes of the text; 0 where it is not there.
std::size_t prefixWithoutJoints(std::string_view text, Shape const& shape) {
    constexpr std::size_t longUndoubted = 5; // letters; of shorter ones the case counts
    bool const countsCase = shape.letters.size() < longUndoubted;
    std::size_t at = 0;
    for (char const c : shape.exact) {
        if (isJoint(c)) {
            at += at < text.size() && isJoint(text[at]);
            continue;
        }
        if (at == text.size() || (countsCase ? text[at] != c : foldedInKey(text[at]) != foldedInKey(c))) return 0;
        ++at;
    }
    return at;
}

/// Bytes of the prefix at the beginning of a text; 0 where it is none.
std::size_t prefixAt(std::string_view text, Shape const& shape) {
    constexpr std::size_t fewestMended = 3; // letters
    bool const isMendable = shape.letters.size() >= fewestMended;
    auto const isJointAt = [&](std::size_t at) { return at < text.size() && isJoint(text[at]); };
    if (!shape.hasJoint) {
        if (text.starts_with(shape.exact)) return shape.exact.size();
        return shape.isUpperCase ? lettersWithOneWrong(text, shape.letters) : 0;
    }
    if (auto const end = prefixWithoutJoints(text, shape); end > 0 && (isMendable || isJointAt(end)))
        return end + (isJointAt(end) ? 1 : 0);
    if (!isMendable) return 0;
    auto const end = lettersWithOneWrong(text, shape.letters);
    return end > 0 && isJointAt(end) ? end + 1 : 0;
}

/// Runs without blanks and quotes: where keys are.
std::vector<ReadPiece> piecesOf(std::string_view text) {
    constexpr std::string_view around = " \t\"'`,;", before = "=:|/([{<>";
    std::vector<ReadPiece> pieces;
    for (std::size_t at = 0; at < text.size();) {
        auto const start = text.find_first_not_of(around, at);
        if (start == text.npos) break;
        at = std::min(text.find_first_of(around, start), text.size());
        auto end = at;
        while (end > start && !isAlphanumeric(text[end - 1]) && text[end - 1] != '=') --end;
        pieces.push_back({start, end});
        for (auto i = start; i + 1 < end; ++i) {
            if (before.find(text[i]) != before.npos) pieces.push_back({i + 1, end});
        }
    }
    return pieces;
}

/// Where keys begin inside of a piece, since the blank before them was not read: "tokghp_a8Kq2…".
void addGluedKeys(std::string_view text, std::vector<ReadPiece>& pieces) {
    constexpr std::size_t fewest = 3; // letters of a prefix
    auto const count = pieces.size();
    for (std::size_t i = 0; i < count; ++i) {
        auto const [start, end] = pieces[i];
        auto const part = text.substr(start, end - start);
        for (auto const& shape : shapes()) {
            if (!shape.hasJoint || shape.exact.size() < fewest || part.size() < shape.fewest) continue;
            auto const at = part.find(shape.exact, 1);
            bool const isPrefix = at != part.npos && at + shape.exact.size() < part.size() &&
                                  (part[at + shape.exact.size()] == '_' || part[at + shape.exact.size()] == '-');
            if (isPrefix) pieces.push_back({start + at, end});
        }
    }
}

/// Whether what follows a prefix is as long as keys are and of their letters, but for a few. All digits of a few
/// capitals may be read as such.
bool isRestOf(Shape const& shape, std::string_view rest, bool hasExactPrefix) {
    if (rest.size() < shape.fewest || rest.size() > shape.most) return false;
    bool const mayBeCapitals = shape.isUpperCase && hasExactPrefix && differentIn(rest) >= fewestDifferent;
    if (!mayBeCapitals && !looksMade(rest)) return false;
    auto const isOther = [&](char c) {
        if (isAlphanumeric(c)) return shape.isUpperCase && isLower(c);
        return shape.joints.find(c) == shape.joints.npos;
    };
    auto const others = static_cast<std::size_t>(std::ranges::count_if(rest, isOther));
    return others * 12 <= rest.size();
}

bool isKey(std::string_view text) {
    return std::ranges::any_of(shapes(), [&](Shape const& shape) {
        auto const prefix = prefixAt(text, shape);
        return prefix > 0 && isRestOf(shape, text.substr(prefix), text.starts_with(shape.exact));
    });
}

/// A JSON web token (RFC 7519), whose dots and first letters may be misread: base64 of `{"`, or three parts.
bool isWebToken(std::string_view text) {
    constexpr std::size_t shortest = 36, shortestPart = 16, shortestNameless = 60;
    auto const isOther = [](char c) { return !isAlphanumeric(c) && !isJoint(c); };
    auto const others = static_cast<std::size_t>(std::ranges::count_if(text, isOther));
    if (text.size() < shortest || others * 16 > text.size() || !looksMade(text)) return false;
    constexpr std::string_view thirds = "JjIl1|3d)";
    bool const begins =
        (text[0] == 'e' || text[0] == 'c') && (text[1] == 'y' || text[1] == 'v') && thirds.find(text[2]) != thirds.npos;
    if (begins) return true;
    if (text.size() < shortestNameless) return false;
    int parts = 0;
    if (others > 0) return false;
    for (std::size_t at = 0; at < text.size(); ++parts) {
        auto const end = std::min(text.find('.', at), text.size());
        if (end - at < shortestPart || !looksMade(text.substr(at, end - at))) return false;
        at = end + 1;
    }
    return parts == 3;
}

/// Where a token goes on behind a blank that is a dot.
std::size_t endOfWebToken(std::string_view text, std::size_t end) {
    constexpr std::size_t shortestPart = 16;
    while (end + 1 < text.size() && text[end] == ' ') {
        auto const next = std::min(text.find_first_of(" \"'`,;<>()[]{}", end + 1), text.size());
        auto const part = text.substr(end + 1, next - end - 1);
        if (part.size() < shortestPart || !looksMade(part) || part.find_first_of("=:/@") != part.npos) break;
        end = next;
    }
    return end;
}

}

void forEachMisreadKey(std::string_view text,
                       std::function<void(SensitiveKind kind, std::size_t start, std::size_t end)> const& found) {
    constexpr std::size_t shortest = 17;
    std::size_t reached = 0;
    auto pieces = piecesOf(text);
    addGluedKeys(text, pieces);
    for (auto const& piece : pieces) {
        if (piece.start < reached || piece.end < piece.start + shortest) continue;
        auto const part = text.substr(piece.start, piece.end - piece.start);
        bool const isToken = isWebToken(part);
        if (!isToken && !isKey(part)) continue;
        reached = isToken ? endOfWebToken(text, piece.end) : piece.end;
        found(isToken ? SensitiveKind::token : SensitiveKind::apiKey, piece.start, reached);
    }
}

bool endsInsideKey(std::string_view text) {
    constexpr std::size_t fewest = 3; // letters of a prefix
    auto const pieces = piecesOf(text);
    return std::ranges::any_of(pieces, [&](ReadPiece const& piece) {
        auto const part = text.substr(piece.start, piece.end - piece.start);
        return piece.end == text.size() && std::ranges::any_of(shapes(), [&](Shape const& shape) {
                   auto const prefix = shape.letters.size() >= fewest ? prefixWithoutJoints(part, shape) : 0;
                   bool const hasJoint = prefix < part.size() && isJoint(part[prefix]) && shape.hasJoint;
                   return prefix > 0 && hasJoint && part.size() - prefix <= shape.fewest;
               });
    });
}

}
