#pragma once

namespace tavaro {

class MendedText;

/// "maria(a)mail,com", "postgres:/shop:…@db": the signs that addresses need.
void mendAddresses(MendedText& text);

}
