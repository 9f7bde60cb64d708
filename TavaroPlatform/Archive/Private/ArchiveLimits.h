#pragma once

#include <cstddef>
#include <cstdint>

/// What an archive may hold, for who packs and who unpacks it.
namespace tavaro::archiveLimits {

constexpr std::size_t mostEntries = 20'000;
constexpr std::ptrdiff_t deepestPath = 16;
constexpr std::uint64_t largestDocument = std::uint64_t{1} << 30; // as files that are read whole may be

}
