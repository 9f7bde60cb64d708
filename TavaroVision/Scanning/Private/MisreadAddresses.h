#pragma once

namespace tavaro {

class MendedText;

/// "maria(a)mail,com", "postgres:/shop:…@db": the signs that addresses need.
void mendAddresses(MendedText& text);

/// "lena.berg@example.orgtome": the next words, whose blanks were not read. Where the whole is a domain, that is found
/// without this.
void partGluedWords(MendedText& text);

}
