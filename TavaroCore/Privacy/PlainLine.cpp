#include <TavaroCore/Privacy/Private/PlainLine.h>

#include <TavaroCore/Privacy/Characters.h>

#include <algorithm>
#include <cstdint>

#include <unicode/utf8.h>

namespace tavaro {

namespace {

/// The character on a keyboard; 0 for none, -1 where the character stays as it is.
int plain(int c) {
    if (c >= 0xFF01 && c <= 0xFF5E) return c - 0xFF01 + '!'; // full width
    if ((c >= 0x2010 && c <= 0x2015) || c == 0x2212 || c == 0xFE58) return '-';
    if ((c >= 0x2018 && c <= 0x201B) || c == 0x2032) return '\'';
    if ((c >= 0x201C && c <= 0x201F) || c == 0xAB || c == 0xBB || c == 0x2033) return '"';
    if (c == 0xA0 || (c >= 0x2000 && c <= 0x200A) || c == 0x202F || c == 0x205F || c == 0x3000) return ' ';
    if ((c >= 0x200B && c <= 0x200D) || c == 0xFEFF || c == 0xAD) return 0;
    if (c == 0x2502 || c == 0x2503 || c == 0x2551) return '|'; // rules of tables
    return -1;
}

}

PlainLine::PlainLine(std::string_view line) : line_(line) {
    if (std::none_of(line.begin(), line.end(), isBeyondASCII)) return;
    text_.reserve(line.size());
    auto const length = static_cast<std::int32_t>(line.size());
    for (std::int32_t i = 0; i < length;) {
        auto const start = i;
        UChar32 c = 0;
        U8_NEXT(line.data(), i, length, c);
        add(c, line.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(i - start)),
            static_cast<std::size_t>(start));
    }
    origin_.push_back(line.size());
}

void PlainLine::add(int character, std::string_view bytes, std::size_t at) {
    auto const typed = plain(character);
    if (typed > 0) {
        text_ += static_cast<char>(typed);
        origin_.push_back(at);
    } else if (typed < 0) {
        for (std::size_t i = 0; i < bytes.size(); ++i) origin_.push_back(at + i);
        text_ += bytes;
    }
}

}
