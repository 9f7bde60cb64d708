#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace tavaro {

struct LineImage;
struct SeenLetter;

/// A word by its ink, and which letters it has.
struct InkWord {
    int left = 0;  // pixels of the line's image
    int right = 0; // one past the last
    std::size_t firstLetter = 0;
    std::size_t letters = 0; // one at least
};

/// The letters, which are in order and inside of the image, as words: where the picture has no ink for as long as a
/// space is wide. The engine's own spaces are what it expects of a language, not what it sees: it puts some into keys,
/// behind their points and dashes, and leaves others out.
std::vector<InkWord> inkWords(LineImage const& image, std::span<SeenLetter const> letters);

}
