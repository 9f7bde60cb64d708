#pragma once

#include <cstddef>
#include <filesystem>
#include <string_view>

namespace tavaro {

struct ScreenScene;

/// Reads pictures of the scenes that happen and look so, each for itself and without a codec between, and prints how
/// many secrets it gives away, what is misread, and what it costs: the reader and the classifier without the scan.
void measureStills(std::string_view only, std::string_view look);

/// Prints the lines that are read at that second of a movie, and whether each has something private.
void printPage(std::filesystem::path const& movie, double seconds);

/// Prints what is read at that second of a scene's movie in the rows where it shows the secret.
void printReading(ScreenScene const& scene, std::filesystem::path const& movie, double seconds, std::size_t secret);

}
