#include <TavaroVision/Reading/Private/InkWords.h>

#include <TavaroVision/Reading/Private/LineImage.h>
#include <TavaroVision/Reading/ReaderTalk.h>

#include <algorithm>
#include <cstdlib>

namespace tavaro {

namespace {

// Of the height of letters, in images that are a little narrowed: narrower gaps are between letters, wider ones are
// spaces, and which of both one between is differs by the face.
constexpr double narrowestGap = 0.27;
constexpr double widestGap = 0.7;
constexpr double engineSpace = 0.5; // how far from its place a space of the engine may be
constexpr double stepsWorth = 4;    // of how many of the engine's spaces a step so high is the equal
constexpr int faintest = 96;        // of 255; ink
constexpr double underlined = 0.6;  // of a row: more ink than letters have

struct Gap {
    int left = 0;
    int right = 0;
    bool isSpaceOfEngine = false;
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

void noteSpacesOfEngine(std::vector<Gap>& gaps, std::span<SeenLetter const> letters, int letterHeight) {
    for (auto const& letter : letters.subspan(1)) {
        if (!letter.beginsWord) continue;
        auto const distance = [&](Gap const& gap) { return std::abs(gap.right - letter.x); };
        auto const nearest = std::ranges::min_element(gaps, {}, distance);
        if (nearest != gaps.end() && distance(*nearest) <= engineSpace * letterHeight) nearest->isSpaceOfEngine = true;
    }
}

/// From which width on a gap is a space: where there is a large step from one width to the next, and few of the
/// engine's spaces are narrower, or gaps wider that it has none for.
double narrowestSpace(std::vector<Gap> const& gaps, int letterHeight) {
    double const low = narrowestGap * letterHeight, high = widestGap * letterHeight;
    std::vector<double> widths{high};
    for (auto const& gap : gaps)
        if (gap.width() < high) widths.push_back(gap.width());
    std::ranges::sort(widths);
    double last = 0, best = high, least = 1e9;
    for (auto const width : widths) {
        double const middle = (last + width) / 2, step = (width - last) / letterHeight;
        last = width;
        if (middle < low) continue;
        auto const wrong =
            std::ranges::count_if(gaps, [&](Gap const& gap) { return gap.isSpaceOfEngine != (gap.width() >= middle); });
        double const cost = static_cast<double>(wrong) - stepsWorth * step;
        if (cost >= least) continue;
        least = cost;
        best = middle;
    }
    return best;
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
    if (first == inked.end()) return {}; // of one colour
    auto gaps = gapsIn(inked);
    noteSpacesOfEngine(gaps, letters, image.letterHeight);
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
