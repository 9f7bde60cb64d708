#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string_view>

namespace tavaro {

/// How keys are written. `%` begins a run: of d digits, h hexadecimal, l lower case and digits, U upper case and
/// digits, w letters and digits, u those and hyphen and underscore, b those of base64, t those of any token, c those of
/// password hashes; its length, and + where it may be longer. Behind %< the secret part begins.
std::span<std::string_view const> keyFormats();

/// Calls `found` with each piece of a plain line that has the format of a key or token that some service hands out:
/// its start and its end. Letters that a reader of pictures confuses count as the same in what all keys of a format
/// have in common.
void forEachFormattedKey(std::string_view text, std::function<void(std::size_t, std::size_t)> const& found);

}
