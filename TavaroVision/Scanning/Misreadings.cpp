#include <TavaroVision/Scanning/Private/Misreadings.h>

#include <TavaroVision/Scanning/Private/MendedText.h>
#include <TavaroVision/Scanning/Private/MisreadAddresses.h>
#include <TavaroVision/Scanning/Private/MisreadLabels.h>
#include <TavaroVision/Scanning/Private/MisreadNumbers.h>
#include <TavaroVision/Scanning/Private/ReadPieces.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace tavaro {

namespace {

constexpr auto none = std::string_view::npos;

/// What keys of services begin with. One letter read in the other case, or as one that looks like it, would hide them.
constexpr std::array<std::string_view, 24> prefixes{
    "sk_live_",    "sk_test_", "rk_live_", "rk_test_", "pk_live_", "pk_test_", "sk-proj-",    "sk-ant-",
    "sk-svcacct-", "ghp_",     "gho_",     "ghs_",     "ghu_",     "ghr_",     "github_pat_", "glpat-",
    "xoxb-",       "xoxp-",    "npm_",     "pypi-",    "whsec_",   "shpat_",   "dop_v1_",     "AKIA"};

/// "-----BEGlN PR1VATE KEV-----", "_____BEGIN RSA PRIVATEKEY": each word with one letter off, whatever the dashes are.
void mendKeyFiles(MendedText& text) {
    auto const line = text.text();
    std::string_view const rest = line;
    constexpr std::string_view first = "BEGIN", kind = "PRIVATE", last = "KEY";
    auto const find = [&](std::string_view word, std::size_t from) {
        for (auto at = from; at + word.size() <= rest.size(); ++at) {
            auto const part = rest.substr(at, word.size());
            if (isNearly(part, word) || isAlike(part, word)) return at;
        }
        return none;
    };
    auto const begin = find(first, 0);
    if (begin == none || begin < 2 || begin > 16) return;
    auto const isDash = [](char c) { return !isAlphanumeric(c) && c != ' '; };
    if (!isDash(rest[begin - 1]) || !isDash(rest[begin - 2])) return;
    auto const middle = find(kind, begin + first.size());
    if (middle == none || middle > begin + 20) return;
    auto const end = find(last, middle + kind.size());
    if (end == none || end > middle + kind.size() + 2) return;
    constexpr std::ptrdiff_t mostSmall = 3; // letters: an l for an I
    auto const name = rest.substr(begin, end + last.size() - begin);
    if (std::ranges::count_if(name, [](char c) { return isLetter(c) && !isUpper(c); }) > mostSmall) return;
    text.replace(middle, end + last.size() - middle, "PRIVATE KEY");
    text.replace(begin, first.size(), first);
    auto const start = rest.find_last_of(' ', begin) == none ? 0 : rest.find_last_of(' ', begin) + 1;
    text.replace(start, begin - start, "-----");
}

}

void mendPrefixes(MendedText& text) {
    for (auto const prefix : prefixes) {
        auto const isPrefix = [](char a, char b) { return folded(a) == folded(b); };
        auto const line = text.text();
        for (auto at = line.begin(); at != line.end(); ++at) {
            at = std::search(at, line.end(), prefix.begin(), prefix.end(), isPrefix);
            if (at == line.end()) break;
            if (at == line.begin() || !isAlphanumeric(at[-1]))
                text.replace(static_cast<std::size_t>(at - line.begin()), prefix.size(), prefix);
        }
    }
}

void mendMisreadings(MendedText& text) {
    mendKeyFiles(text);
    mendLabels(text);
    mendAddresses(text);
    mendNumbers(text);
}

}
