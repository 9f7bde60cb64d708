#pragma once

#include <string_view>

namespace tavaro {

/// Reads pictures of the scenes, each for itself and without a codec between, and prints how many secrets the words
/// of single lines give away, what is misread, and what it costs: the reader and the classifier without the scan.
void measureStills(std::string_view only);

}
