#include <TavaroVision/Reading/Private/InkWords.h>

#include <TavaroVision/Reading/LineImage.h>
#include <TavaroVision/Reading/ReaderTalk.h>

#include <algorithm>
#include <cstdlib>

namespace tavaro {

namespace {

// Of the height of letters, in images that are a little narrowed: letters of all faces are nearer than `letterGap`,
// words further apart than `wordGap`, and which of both a gap between is differs by the face.
constexpr double letterGap = 0.3;
constexpr double wordGap = 0.62;
constexpr double engineSpace = 0.5; // how far from its place the engine's own space is believed to be meant
constexpr int faintest = 96;        // of 255; ink
constexpr double underlined = 0.6;  // of a row: more ink than letters have

struct Gap {
    int left = 0;
    int right = 0;
    int width() const { return right - left; }
};

/// Which columns have ink. Rows that are a line below the text are no letters.
std::vector<bool> inkedColumns(LineImage const& image) {
    auto const width = static_cast<std::size_t>(image.width);
    std::vector<bool> inked(width);
    for (int y = 0; y < image.height; ++y) {
        auto const row = std::span(image.pixels).subspan(static_cast<std::size_t>(y) * width, width);
        auto const isInk = [](auto pixel) { return 255 - pixel >= faintest; };
        if (static_cast<double>(std::ranges::count_if(row, isInk)) > underlined * image.width) continue;
        for (std::size_t x = 0; x < width; ++x)
            if (isInk(row[x])) inked[x] = true;
    }
    return inked;
}

/// Between two columns with ink.
std::vector<Gap> gapsIn(std::vector<bool> const& inked) {
    std::vector<Gap> gaps;
    int last = -1;
    for (int x = 0; x < static_cast<int>(inked.size()); ++x) {
        if (!inked[static_cast<std::size_t>(x)]) continue;
        if (last >= 0 && x > last + 1) gaps.push_back({last + 1, x});
        last = x;
    }
    return gaps;
}

/// From which width on a gap is a space: in the middle of the largest step between one width and the next.
double narrowestSpace(std::vector<Gap> const& gaps, int letterHeight) {
    std::vector<double> widths{0.2 * letterHeight, wordGap * letterHeight};
    for (auto const& gap : gaps)
        if (gap.width() > widths[0] && gap.width() < widths[1]) widths.push_back(gap.width());
    std::ranges::sort(widths);
    double step = 0, narrowest = wordGap * letterHeight;
    for (std::size_t i = 0; i + 1 < widths.size(); ++i) {
        double const middle = (widths[i] + widths[i + 1]) / 2;
        if (middle < letterGap * letterHeight || widths[i + 1] - widths[i] <= step) continue;
        step = widths[i + 1] - widths[i];
        narrowest = middle;
    }
    return narrowest;
}

/// Before which letter, from `from` on, a space is: the one that begins nearest to the space's end. Where the engine
/// has a space too, it is likely to be that.
std::size_t letterAfter(Gap const& space, std::span<SeenLetter const> letters, std::size_t from, int letterHeight) {
    std::size_t best = from;
    double least = 0;
    for (auto i = from; i < letters.size(); ++i) {
        double distance = std::abs(letters[i].x - space.right);
        if (letters[i].beginsWord) distance -= engineSpace * letterHeight;
        if (i != from && distance >= least) continue;
        best = i;
        least = distance;
    }
    // All that is left may be before it: what is behind was not read.
    auto const& last = letters.back();
    if (best + 1 == letters.size() && last.x + last.width <= space.left) return letters.size();
    return best;
}

}

std::vector<InkWord> inkWords(LineImage const& image, std::span<SeenLetter const> letters) {
    if (letters.empty()) return {};
    auto const inked = inkedColumns(image);
    auto const first = std::ranges::find(inked, true);
    if (first == inked.end()) return {{0, image.width, 0, letters.size()}};
    auto gaps = gapsIn(inked);
    double const narrowest = narrowestSpace(gaps, image.letterHeight);
    std::erase_if(gaps, [&](Gap const& gap) { return gap.width() < narrowest; });
    int const end = static_cast<int>(inked.rend() - std::find(inked.rbegin(), inked.rend(), true));
    std::vector<InkWord> words;
    InkWord word{.left = static_cast<int>(first - inked.begin())};
    for (auto const& space : gaps) {
        auto const after = letterAfter(space, letters, word.firstLetter, image.letterHeight);
        word.letters = after - word.firstLetter;
        if (word.letters == 0) continue; // nothing was read there; it is added to the next
        word.right = space.left;
        words.push_back(word);
        word = {.left = space.right, .firstLetter = after};
        if (after == letters.size()) return words;
    }
    word.right = end;
    word.letters = letters.size() - word.firstLetter;
    words.push_back(word);
    return words;
}

}
