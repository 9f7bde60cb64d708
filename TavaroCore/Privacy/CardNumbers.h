#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

namespace tavaro {

/// Whether digits and what groups them are a card's number: of a length that an issuer of that beginning gives out
/// (ISO/IEC 7812), grouped as on cards or not at all, with its check digit.
bool isCardNumber(std::string_view text);

/// Calls `found` with the card numbers in a plain line, also where an expiry date follows, or an O is read for a zero.
void forEachCardNumber(std::string_view text, std::function<void(std::size_t, std::size_t)> const& found);

}
