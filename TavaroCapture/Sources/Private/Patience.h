#pragma once

#include <chrono>

namespace tavaro {

/// How long a take that ends waits for a desktop that does not answer.
constexpr std::chrono::seconds answerPatience{2};

}
