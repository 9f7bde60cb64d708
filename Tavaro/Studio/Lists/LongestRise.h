#pragma once

#include <cstddef>
#include <vector>

namespace tavaro {

/// Which of these numbers, all different, belong to one longest ascending subsequence. n log n.
std::vector<bool> longestRise(std::vector<std::size_t> const& numbers);

}
