#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

namespace tavaro {

/// Calls `found` with the phone numbers in a plain line: with a country's code (ITU-T E.164), behind a label that says
/// so, or written as calls inside a country are. Most groups of digits are none of these.
void forEachPhoneNumber(std::string_view text, std::function<void(std::size_t, std::size_t)> const& found);

}
