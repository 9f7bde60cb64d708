#include <TavaroVision/Scanning/Private/MisreadAddresses.h>

#include <TavaroVision/Scanning/Private/MendedText.h>
#include <TavaroVision/Scanning/Private/ReadPieces.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace tavaro {

namespace {

constexpr auto none = std::string_view::npos;

/// "postgres:/shop:…@db", "postgres:l/shop:…@db"
void mendSchemes(MendedText& text) {
    constexpr std::array<std::string_view, 12> schemes{"postgres", "postgresql", "mysql", "mariadb", "mongodb", "redis",
                                                       "amqp",     "https",      "http",  "ftp",     "sftp",    "smtp"};
    for (auto const word : wordsFromEnd(text.text())) {
        auto const line = std::string_view(text.text());
        auto const colon = line.find(':', word.start), at = line.find('@', word.start);
        if (colon >= word.end || at >= word.end || at < colon) continue;
        auto const name = line.substr(word.start, colon - word.start);
        bool const isScheme = std::ranges::any_of(schemes, [&](auto scheme) { return name.ends_with(scheme); });
        auto end = colon + 1;
        while (end < colon + 3 && isAnyOf(line[end], "/\\lI|1")) ++end;
        bool const hasSlash = line.substr(colon, end - colon).find('/') != none;
        if (isScheme && hasSlash && line.find(':', end) < at) text.replace(colon + 1, end - colon - 1, "//");
    }
}

constexpr std::array<std::string_view, 13> domains{"com", "org", "net", "de", "io",  "eu",  "fr",
                                                   "uk",  "nl",  "ch",  "at", "dev", "info"};

/// "maria(a)mail.com", "maria©mail.com": what the sign of mail addresses is taken for between a name and a domain.
void mendMailSigns(MendedText& text) {
    constexpr std::array<std::string_view, 8> signs{"(a)", "(@)", "(a", "(@", "[@]", "[@", "©", "®"};
    for (auto const word : wordsFromEnd(text.text())) {
        auto const line = std::string_view(text.text()).substr(word.start, word.size());
        for (auto const sign : signs) {
            auto const at = line.find(sign);
            if (at == none || at < 2) continue;
            auto const domain = line.substr(at + sign.size());
            auto const dot = domain.rfind('.');
            auto const ending = dot == none ? std::string_view() : domain.substr(dot + 1);
            bool const isDomain = dot != none && dot > 0 && std::ranges::find(domains, ending) != domains.end();
            if (!isDomain || !isAlphanumeric(line[at - 1]) || !isAlphanumeric(domain[0])) continue;
            text.replace(word.start + at, sign.size(), "@");
            break;
        }
    }
}

/// "maria@mail,com", "maria@mailcom": the dot before the domain's end.
void mendMailDots(MendedText& text) {
    constexpr std::size_t shortestName = 3;
    for (auto const word : wordsFromEnd(text.text())) {
        auto const line = std::string_view(text.text()).substr(word.start, word.size());
        auto const at = line.find('@');
        if (at == none || at < 2 || !isAlphanumeric(line[at - 1])) continue;
        auto const domain = line.substr(at + 1);
        auto end = domain.size();
        while (end > 0 && !isAlphanumeric(domain[end - 1])) --end;
        auto const comma = domain.substr(0, end).find(',');
        if (comma != none && std::ranges::find(domains, domain.substr(comma + 1, end - comma - 1)) != domains.end()) {
            text.replace(word.start + at + 1 + comma, 1, ".");
        } else if (domain.find_first_of(".,") == none && std::ranges::all_of(domain.substr(0, end), isAlphanumeric)) {
            for (std::string_view const ending : {"com", "org", "net"}) {
                if (!domain.substr(0, end).ends_with(ending) || end < ending.size() + shortestName) continue;
                text.replace(word.start + at + 1 + end - ending.size(), 0, ".");
            }
        }
    }
}

}

void mendAddresses(MendedText& text) {
    mendSchemes(text);
    mendMailSigns(text);
    mendMailDots(text);
}

void partGluedWords(MendedText& text) {
    for (auto const word : wordsFromEnd(text.text())) {
        auto const line = std::string_view(text.text()).substr(word.start, word.size());
        auto const at = line.find('@'), dot = line.rfind('.');
        bool const isMail = at != none && at >= 2 && isAlphanumeric(line[at - 1]) && dot != none && dot > at + 1;
        auto const ending = isMail ? line.substr(dot + 1) : std::string_view();
        if (!std::ranges::all_of(ending, isLetter)) continue;
        auto const isGlued = [&](std::string_view domain) {
            return ending.size() > domain.size() + 1 && ending.starts_with(domain);
        };
        auto const known = std::ranges::find_if(domains, isGlued);
        if (known != domains.end()) text.replace(word.start + dot + 1 + known->size(), 0, " ");
    }
}

}
