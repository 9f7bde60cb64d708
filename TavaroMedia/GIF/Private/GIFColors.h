#pragma once

#include <cstdint>
#include <vector>

#include <TavaroMedia/FFmpeg/Private/Handles.h>
#include <TavaroMedia/GIF/GIFPalette.h>
#include <TavaroMedia/GIF/Private/ColorSearch.h>

namespace tavaro {

/// Draws the pictures of a film in a palette's colours. Every pixel takes the nearest one, so areas of one colour stay
/// so; dots that mix colours would cost bytes, and be further from the picture than the bands that they hide. A pixel
/// that does not change keeps its colour from picture to picture, and one between others that of its neighbour, or its
/// own of before, where the eye sees no difference: what repeats costs little.
class GIFColors {
public:
    GIFColors(int width, int height, GIFPalette const& palette);

    /// Of a picture in ARGB, the same in indices of the palette.
    ffmpeg::Frame draw(AVFrame const& picture);

private:
    void drawRow(std::uint32_t const* row, int y);
    bool isLike(std::uint8_t index, ColorLevels color) const;
    ffmpeg::Frame indexed() const;

    int width_;
    int height_;
    GIFPalette palette_;
    ColorSearch search_;
    std::vector<std::uint32_t> source_; // of the newest picture, each pixel
    std::vector<std::uint8_t> shown_;   // what is drawn of it
    bool isFirst_ = true;
};

}
