#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace tavaro {

/// The X keysyms that type a text in UTF-8, one a character; a line end of whichever kind is Return. Throws
/// `AutomationError` (`invalidRequest`) for bytes that are no UTF-8 and for characters that no key can make.
std::vector<std::uint32_t> textSymbols(std::string_view text);

}
