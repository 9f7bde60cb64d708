#pragma once

#include <TavaroVision/Reading/ReadText.h>
#include <TavaroVision/Scanning/Private/MendedText.h>

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace tavaro {

/// A line as it is on the screen; the words' boxes are beside its corner.
struct PlacedLine {
    PixelBox box;
    int letterHeight = 0;
    std::span<ReadWord const> words;
};

/// How the words of a line are put together.
struct ReadingStyle {
    enum class Spaces { all, whereThereIsRoom, notAtJoints };
    enum class Mending { prefixes, everything };
    enum class Wraps { atSpaces, insideWords };

    Spaces spaces = Spaces::all;
    Mending mending = Mending::everything;
    Wraps wraps = Wraps::atSpaces; // where there is more than one line
};

/// The words of a line, or of one that goes on in those below it, as one text, and where its bytes are.
class ScreenText {
public:
    /// Of some of the lines, which outlive it, one after the other.
    ScreenText(std::span<PlacedLine const> lines, std::span<std::size_t const> indices, ReadingStyle const& style);

    std::string const& text() const { return mended_.text(); }
    bool isMended() const { return mended_.isMended(); }

    /// A value whose end was misread goes on to the end of its word.
    std::size_t wordEnd(std::size_t end) const;
    /// Likewise one whose beginning was.
    std::size_t wordStart(std::size_t start) const;

    /// Whether a piece of the text was read as words of a sentence, between which there is no blank now.
    bool isSentence(std::size_t start, std::size_t end) const;

    /// A piece of the text on the screen: in each line its bytes, and pixels beside the line's corner.
    struct Place {
        std::size_t line = 0;
        std::string text;
        int left = 0;
        int right = 0;
    };
    std::vector<Place> placesOf(std::size_t start, std::size_t end) const;

private:
    enum class Side { left, right };
    struct Word {
        std::size_t line = 0;
        ReadWord const* read = nullptr;
        std::size_t start = 0; // in the text as it was read
    };

    void add(std::size_t line, PlacedLine const& placed, ReadingStyle const& style);
    void blankBorders(std::string& text) const;
    int edge(Word const& word, std::size_t bytes, Side side) const;

    std::vector<Word> words_;
    std::string read_;
    MendedText mended_{{}};
};

}
