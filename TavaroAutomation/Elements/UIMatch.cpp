#include <TavaroAutomation/Elements/Private/UIMatch.h>

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <tuple>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

namespace tavaro {

namespace {

icu::Normalizer2 const& decomposing() {
    static icu::Normalizer2 const& form = []() -> icu::Normalizer2 const& {
        UErrorCode code = U_ZERO_ERROR;
        return *icu::Normalizer2::getNFKDInstance(code);
    }();
    return form;
}

bool isLetter(UChar32 c) { return u_isalnum(c) != 0; }

/// One character for all quotes, one for all dashes; 0 for what nobody sees.
UChar32 plain(UChar32 c) {
    switch (c) {
    case 0x2018:
    case 0x2019: return '\'';
    case 0x201C:
    case 0x201D:
    case 0x201E: return '"';
    case 0x2010:
    case 0x2011:
    case 0x2012:
    case 0x2013:
    case 0x2014:
    case 0x2212: return '-';
    default: break;
    }
    if (u_isUWhiteSpace(c) != 0 || u_iscntrl(c) != 0) return ' ';
    return u_hasBinaryProperty(c, UCHAR_DEFAULT_IGNORABLE_CODE_POINT) != 0 ? 0 : c;
}

bool isMnemonic(icu::UnicodeString const& text, std::int32_t at) {
    UChar32 const c = text.char32At(at);
    if (c != '&' && c != '_') return false;
    bool const startsWord = at == 0 || !isLetter(text.char32At(at - 1));
    return at + 1 < text.length() && isLetter(text.char32At(at + 1)) && (c == '&' || startsWord);
}

/// As `UIMatch` says of exact titles.
icu::UnicodeString compared(std::string_view title) {
    auto text = icu::UnicodeString::fromUTF8({title.data(), static_cast<std::int32_t>(title.size())});
    if (auto const tab = text.indexOf(u'\t'); tab > 0) text.truncate(tab);
    text.foldCase();
    UErrorCode code = U_ZERO_ERROR;
    text = decomposing().normalize(text, code);
    icu::UnicodeString result;
    for (std::int32_t at = 0; at < text.length(); at = text.moveIndex32(at, 1)) {
        if (isMnemonic(text, at)) continue;
        UChar32 const c = plain(text.char32At(at));
        bool const isRepeated = c == ' ' && (result.isEmpty() || result.endsWith(u" "));
        if (c != 0 && !isRepeated) result.append(c);
    }
    return result.trim();
}

/// Without accents, and without an ellipsis or a colon at the end.
icu::UnicodeString loosely(icu::UnicodeString const& text) {
    icu::UnicodeString result;
    for (std::int32_t at = 0; at < text.length(); at = text.moveIndex32(at, 1)) {
        UChar32 const c = text.char32At(at);
        if (u_charType(c) != U_NON_SPACING_MARK) result.append(c);
    }
    while (result.endsWith(u".") || result.endsWith(u":") || result.endsWith(u" "))
        result.truncate(result.length() - 1);
    return result.isEmpty() ? text : result;
}

enum class Fit { exact, loose, start, word, inside, none };

struct Title {
    explicit Title(std::string_view title) : exact(compared(title)), loose(loosely(exact)) {}

    Fit fit(Title const& wanted) const {
        if (exact == wanted.exact) return Fit::exact;
        if (loose == wanted.loose) return Fit::loose;
        auto at = loose.indexOf(wanted.loose);
        if (at < 0) return Fit::none;
        if (at == 0) return Fit::start;
        for (; at > 0; at = loose.indexOf(wanted.loose, at + 1)) {
            if (!isLetter(loose.char32At(at - 1))) return Fit::word;
        }
        return Fit::inside;
    }

    icu::UnicodeString exact;
    icu::UnicodeString loose;
};

int roleRank(std::string_view role) {
    constexpr std::array<std::string_view, 5> fields{"TextField", "SearchField", "TextArea", "Slider", "Stepper"};
    constexpr std::array<std::string_view, 3> rows{"OutlineRow", "Row", "Icon"};
    constexpr int control = 0, field = 1, row = 2, cell = 3;
    if (role == "Cell") return cell;
    if (std::ranges::find(rows, role) != rows.end()) return row;
    return std::ranges::find(fields, role) != fields.end() ? field : control;
}

bool hasRole(UIElement const& element, std::string_view role) {
    return role.empty() || compared(element.role) == compared(role);
}

/// The smaller the better.
auto rank(UIElement const& element, Fit fit) {
    auto const kind = std::min(fit, Fit::start); // parts of titles are one kind
    return std::tuple(kind, !element.isVisible, roleRank(element.role), !element.isEnabled, fit, element.title.size());
}

/// How many pairs of neighbouring characters both have, 0…1.
double likeness(icu::UnicodeString const& a, icu::UnicodeString const& b) {
    auto const pairs = [](icu::UnicodeString const& text) {
        std::multiset<std::pair<char16_t, char16_t>> result;
        for (std::int32_t i = 0; i + 1 < text.length(); ++i) result.emplace(text[i], text[i + 1]);
        return result;
    };
    auto const left = pairs(a), right = pairs(b);
    std::vector<std::pair<char16_t, char16_t>> common;
    std::ranges::set_intersection(left, right, std::back_inserter(common));
    auto const all = left.size() + right.size();
    return all == 0 ? 0 : 2.0 * static_cast<double>(common.size()) / static_cast<double>(all);
}

}

std::optional<std::size_t> UIMatch::find(std::vector<UIElement> const& elements, Wanted const& wanted) {
    Title const title(wanted.title);
    std::optional<std::size_t> best;
    Fit bestFit = Fit::none;
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (!hasRole(elements[i], wanted.role)) continue;
        auto const fit = Title(elements[i].title).fit(title);
        if (fit == Fit::none || title.exact.isEmpty()) continue;
        if (best && !(rank(elements[i], fit) < rank(elements[*best], bestFit))) continue;
        best = i;
        bestFit = fit;
    }
    return best;
}

bool UIMatch::isSame(std::string_view title, std::string_view other) {
    return Title(title).fit(Title(other)) <= Fit::loose;
}

bool UIMatch::contains(std::string_view title, std::string_view part) {
    Title const wanted(part);
    return wanted.exact.isEmpty() || Title(title).fit(wanted) != Fit::none;
}

std::vector<std::string> UIMatch::suggestions(std::vector<UIElement> const& elements, Wanted const& wanted) {
    constexpr std::size_t most = 8;
    Title const title(wanted.title);
    std::vector<std::pair<double, std::string>> found;
    std::set<std::string> seen;
    for (auto const& element : elements) {
        if (element.title.empty() || !hasRole(element, wanted.role) || !seen.insert(element.title).second) continue;
        found.emplace_back(-likeness(Title(element.title).loose, title.loose), element.title);
    }
    std::ranges::stable_sort(found, {}, [](auto const& each) { return each.first; });
    std::vector<std::string> result;
    for (auto const& [likeness, each] : found) {
        if (result.size() < most) result.push_back(each);
    }
    return result;
}

}
