#pragma once

#include <string_view>

namespace tavaro {

/// Whether text with an @ in it is an address of somebody: its domain ends in one that exists or is kept for examples,
/// and it is neither the name of a picture, a unit or a repository nor a piece of code. `before` and `after` are what
/// is around it on its line.
bool isMailAddress(std::string_view text, std::string_view before, std::string_view after);

}
