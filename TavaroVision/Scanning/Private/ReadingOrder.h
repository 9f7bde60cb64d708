#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace tavaro {

struct PlacedLine;

/// Lines that are read one after the other: each column of a screen, from the top.
std::vector<std::vector<std::size_t>> readingOrder(std::span<PlacedLine const> lines);

/// The nearest one on the same row, left of that line.
std::optional<std::size_t> lineBefore(std::span<PlacedLine const> lines, std::size_t line);

}
