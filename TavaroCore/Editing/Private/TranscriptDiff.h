#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace tavaro {

/// The index of a symbol in the first and in the second sequence.
using Match = std::pair<std::size_t, std::size_t>;

/// A longest common subsequence, ascending. Eugene W. Myers, "An O(ND) Difference Algorithm and Its Variations", 1986,
/// in linear space: near-linear for sequences that differ little.
std::vector<Match> longestCommonSubsequence(std::span<std::uint32_t const> a, std::span<std::uint32_t const> b);

}
