#pragma once

#include <TavaroMedia/Frames/Image.h>
#include <TavaroVision/Reading/ReadText.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tavaro {

struct Ink {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    bool operator==(Ink const&) const = default;
};

struct TextFace {
    std::string family = "JetBrains Mono";
    double size = 14; // pixels
    bool isBold = false;
    bool operator==(TextFace const&) const = default;
};

/// Bytes of a text that have another ink.
struct InkRun {
    std::size_t start = 0;
    std::size_t end = 0;
    Ink ink;
};

/// Where a letter of a line is, beside the line's top left.
struct LetterBox {
    std::size_t start = 0; // its first byte
    PixelBox box;          // its advance wide, from the font's ascent to its descent
};

/// A screen's picture, drawn as programs draw theirs: flat areas and lines of text with soft edges. Lines are set once
/// and kept, so that drawing the same screen over and over costs little more than copying it.
class DrawnScreen {
public:
    DrawnScreen(int width, int height);
    ~DrawnScreen();
    DrawnScreen(DrawnScreen&&) noexcept;

    int width() const;
    int height() const;

    void fill(PixelBox const& area, Ink ink);
    /// Nothing is drawn outside of the area until the next `clip`; an empty one is the whole screen.
    void clip(PixelBox const& area);
    /// One line, its top left at that pixel.
    void write(std::string const& text, int x, int top, TextFace const& face, Ink ink,
               std::span<InkRun const> runs = {});
    /// An arrow whose tip is there.
    void drawPointer(int x, int y, double scale);

    /// The letters of a line that `write` would draw; kept likewise.
    std::vector<LetterBox> const& letters(std::string const& text, TextFace const& face);
    int lineHeight(TextFace const& face);

    /// Blue first; good until the next drawing. The fourth byte means nothing.
    ImageView pixels() const;
    Image picture() const;                  // red first, opaque
    std::vector<std::uint8_t> gray() const; // the brightness of each pixel, BT.709 in full range

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
