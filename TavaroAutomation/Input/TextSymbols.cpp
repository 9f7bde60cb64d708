#include <TavaroAutomation/Input/Private/TextSymbols.h>

#include <TavaroAutomation/Errors/AutomationError.h>

#include <fmt/format.h>
#include <unicode/utf8.h>
#include <xkbcommon/xkbcommon.h>

namespace tavaro {

namespace {

[[noreturn]] void refuse(std::string const& sentence) {
    throw AutomationError(AutomationError::Kind::invalidRequest, sentence);
}

std::uint32_t symbolOf(UChar32 character) {
    if (character == '\n') return XKB_KEY_Return;
    if (character == '\t') return XKB_KEY_Tab;
    bool const isControl = character < 0x20 || (character >= 0x7f && character < 0xa0);
    auto const symbol = isControl ? XKB_KEY_NoSymbol : xkb_utf32_to_keysym(static_cast<std::uint32_t>(character));
    if (symbol == XKB_KEY_NoSymbol)
        refuse(fmt::format("The text cannot be typed: no key makes the character U+{:04X}.", character));
    return symbol;
}

}

std::vector<std::uint32_t> textSymbols(std::string_view text) {
    std::vector<std::uint32_t> result;
    result.reserve(text.size());
    auto const length = static_cast<std::int32_t>(text.size());
    for (std::int32_t at = 0; at < length;) {
        UChar32 character = 0;
        U8_NEXT(text.data(), at, length, character);
        if (character < 0) refuse("The text cannot be typed: it is not UTF-8.");
        if (character == '\r') {
            if (at < length && text[static_cast<std::size_t>(at)] == '\n') ++at;
            character = '\n';
        }
        result.push_back(symbolOf(character));
    }
    return result;
}

}
