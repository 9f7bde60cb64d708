#include <TavaroCapture/CameraSync/Private/MotionMeter.h>

#include <cmath>
#include <utility>

namespace tavaro {

namespace {

constexpr int columns = 48;
constexpr int rows = 36;

/// Of a place of the grid; every fourth pixel each way is enough.
float brightness(ImageView picture, int column, int row) {
    int const left = column * picture.width / columns, right = (column + 1) * picture.width / columns;
    int const top = row * picture.height / rows, bottom = (row + 1) * picture.height / rows;
    int sum = 0, count = 0;
    for (int y = top; y < bottom; y += 4)
        for (int x = left; x < right; x += 4, ++count) {
            auto const* const pixel = picture.row(y) + 4 * x;
            sum += pixel[0] + 2 * pixel[1] + pixel[2];
        }
    return count > 0 ? static_cast<float>(sum) / static_cast<float>(4 * count) : 0;
}

}

void MotionMeter::add(CapturedPicture const& picture) {
    auto const pixels = pixels_.of(picture.picture);
    std::vector<float> grid;
    grid.reserve(std::size_t{columns} * rows);
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column) grid.push_back(brightness(pixels.view, column, row));
    auto const before = std::exchange(last_, std::move(grid));
    if (before.empty()) return;
    float sum = 0;
    for (std::size_t i = 0; i < last_.size(); ++i) sum += std::abs(last_[i] - before[i]);
    motions_.push_back({picture.capturedAt, sum / static_cast<float>(last_.size())});
}

}
