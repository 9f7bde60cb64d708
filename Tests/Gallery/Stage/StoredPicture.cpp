#include "StoredPicture.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace tavaro::gallery {

Image reduced(ImageView canvas) {
    constexpr int n = storedReduction;
    Image picture(canvas.width / n, canvas.height / n);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            int const behind = (x / 8 + y / 8) % 2 ? 210 : 255;
            auto* out = picture.row(y) + 4 * x;
            for (int c = 0; c < 3; ++c) {
                int sum = 0;
                for (int i = 0; i < n * n; ++i) {
                    auto const* p = canvas.row(y * n + i / n) + 4 * (x * n + i % n);
                    sum += (p[c] * p[3] + behind * (255 - p[3])) / 255;
                }
                out[c] = static_cast<std::uint8_t>(sum / (n * n));
            }
            out[3] = 255;
        }
    return picture;
}

Image coarsened(ImageView picture) {
    Image coarse(picture.width, picture.height);
    for (int y = 0; y < picture.height; ++y)
        for (int i = 0; i < 4 * picture.width; ++i) {
            auto const value = (picture.row(y)[i] + storedStep / 2) / storedStep * storedStep;
            coarse.row(y)[i] = static_cast<std::uint8_t>(i % 4 == 3 ? 255 : std::min(value, 255));
        }
    return coarse;
}

PictureDifference pictureDifference(ImageView a, ImageView b) {
    PictureDifference difference;
    double sum = 0;
    for (int y = 0; y < a.height; ++y)
        for (int i = 0; i < 4 * a.width; ++i) {
            auto const d = std::abs(a.row(y)[i] - b.row(y)[i]);
            difference.largest = std::max(difference.largest, d);
            sum += d;
        }
    difference.mean = sum / (3.0 * a.width * a.height);
    return difference;
}

Image comparison(ImageView stored, ImageView drawn) {
    constexpr int gap = 8;
    Image sheet(3 * drawn.width + 2 * gap, drawn.height);
    for (int y = 0; y < drawn.height; ++y) {
        auto* row = sheet.row(y);
        for (int i = 0; i < 4 * sheet.width(); ++i) row[i] = 255;
        auto* third = row + 8 * (drawn.width + gap);
        std::memcpy(row, stored.row(y), 4 * static_cast<std::size_t>(drawn.width));
        std::memcpy(row + 4 * (drawn.width + gap), drawn.row(y), 4 * static_cast<std::size_t>(drawn.width));
        for (int i = 0; i < 4 * drawn.width; ++i)
            if (i % 4 != 3)
                third[i] = static_cast<std::uint8_t>(std::min(8 * std::abs(stored.row(y)[i] - drawn.row(y)[i]), 255));
    }
    return sheet;
}

}
