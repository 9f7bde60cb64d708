#pragma once

namespace tavaro {

class MendedText;

/// Puts right what a reader of screens is known to get wrong where it would hide something private, and nothing that
/// could be meant: names of keys and labels with one letter off, signs that addresses need, letters in numbers.
void mendMisreadings(MendedText& text);

/// Prefixes of keys as services write them, where what was read differs by case and look-alikes only.
void mendPrefixes(MendedText& text);

}
