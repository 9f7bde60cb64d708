#include <TavaroCore/Privacy/Private/MailAddresses.h>

#include <TavaroCore/Privacy/Characters.h>

#include <algorithm>
#include <string>

#include <libpsl.h>

namespace tavaro {

namespace {

/// RFC 2606, RFC 6762, RFC 8375, and what private networks use.
bool isReserved(std::string_view ending) {
    constexpr std::string_view reserved[] = {"corp",    "example", "home",  "internal",    "intranet",
                                             "invalid", "lan",     "local", "localdomain", "test"};
    return std::binary_search(std::begin(reserved), std::end(reserved), ending);
}

/// Endings of files that are domains of countries as well.
bool isFileType(std::string_view ending) {
    constexpr std::string_view types[] = {"app", "cab", "md", "mov", "pl", "ps", "py", "rs", "sh", "so", "ts", "zip"};
    return std::binary_search(std::begin(types), std::end(types), ending);
}

bool isDomainOfTop(std::string const& ending) {
    static psl_ctx_t const* const list = psl_builtin(); // never freed, as the library has it
    if (isReserved(ending)) return true;
    return psl_is_public_suffix2(list, ending.c_str(), PSL_TYPE_ICANN | PSL_TYPE_NO_STAR_RULE) != 0;
}

/// "2x", "3x": pictures for dense screens.
bool isScale(std::string_view label) { return label.size() == 2 && isDigit(label[0]) && label[1] == 'x'; }

}

bool isMailAddress(std::string_view text, std::string_view before, std::string_view after) {
    auto const domain = text.substr(text.find('@') + 1);
    auto const dot = domain.rfind('.');
    std::string ending(domain.substr(dot + 1));
    std::transform(ending.begin(), ending.end(), ending.begin(), lower);
    auto const name = domain.substr(0, dot);
    auto const label = name.substr(name.rfind('.') + 1);
    if (!isDomainOfTop(ending) || isScale(label) || label.empty() || domain.find("..") != domain.npos) return false;
    auto const user = text.substr(0, text.find('@'));
    bool const isCode = user == "this" || user == "super" || after.starts_with('(');
    if (isCode || (isFileType(ending) && (isUpper(label[0]) || user.size() < 2))) return false; // "x@y.py"
    bool const isPlace = after.starts_with(":/") || after.starts_with(":~") || after.starts_with(":.");
    if (isPlace || (user == "git" && after.starts_with(':'))) return false;
    bool const isHandle = before.ends_with('@') || before.ends_with("/@"); // "@maria@social.example"
    return !isHandle && !before.ends_with("://");
}

}
