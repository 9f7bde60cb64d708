#pragma once

namespace tavaro {

class MendedText;

/// "(2l2) 555-O199", "is(415) 555-4845", "+44\\20 1208 5007", cards of which one digit was misread.
void mendNumbers(MendedText& text);

}
