#pragma once

#include <cstdint>
#include <vector>

#include <TavaroMedia/FFmpeg/Private/Handles.h>
#include <TavaroMedia/GIF/GIFPalette.h>
#include <TavaroMedia/GIF/Private/ColorSearch.h>

namespace tavaro {

/// Draws the pictures of a film in a palette's colours. Pixels take the nearest colour; where a picture passes softly
/// from one colour to another a faint pattern breaks the edges of the bands. Areas of one colour stay so, the edges of
/// letters stay sharp, and a pixel that does not change keeps its colour from picture to picture.
class GIFDithering {
public:
    GIFDithering(int width, int height, GIFPalette const& palette);

    /// Of a picture in ARGB, the same in indices of the palette.
    ffmpeg::Frame draw(AVFrame const& picture);

private:
    struct Range;

    void findSoftBlocks(AVFrame const& picture);
    Range rangeOf(AVFrame const& picture, int column, int row) const;
    void drawRow(std::uint32_t const* row, int y);
    std::uint8_t nearest(std::uint32_t argb, int pattern);
    ffmpeg::Frame indexed() const;

    int width_;
    int height_;
    GIFPalette palette_;
    ColorSearch search_;
    int columns_; // of blocks
    int rows_;
    std::vector<char> isSoft_;          // each block
    std::vector<std::uint32_t> source_; // of the newest picture, each pixel
    std::vector<std::uint8_t> shown_;   // what is drawn of it
    bool isFirst_ = true;
};

}
