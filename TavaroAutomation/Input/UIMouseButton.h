#pragma once

#include <array>
#include <string_view>

namespace tavaro {

/// As the user means it, also where buttons are swapped for the left hand.
enum class UIMouseButton { left, right };

constexpr std::array<std::string_view, 2> namesOf(UIMouseButton) { return {"left", "right"}; }

}
