#include <TavaroRender/Sheet/SheetLayout.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr std::int64_t smallestPicture = 96; // pixels wide
constexpr std::int64_t smallestSide = 16;    // that can be drawn

/// How far a grid of pictures is from the canvas's own shape, and how much of it stays empty.
double strain(int columns, int count) {
    int const rows = (count + columns - 1) / columns;
    double const shape = std::abs(std::log(static_cast<double>(columns) / rows));
    return shape + static_cast<double>(columns * rows - count) / count;
}

int bestColumns(int count) {
    int best = 1;
    for (int columns = 2; columns <= count; ++columns) {
        if (strain(columns, count) <= strain(best, count) + 1e-9) best = columns; // of two alike, the wider
    }
    return best;
}

std::int64_t rounded(double value) { return std::llround(value); }

}

SheetLayout sheetLayout(int count, Size2 canvas, std::int64_t width) {
    SheetLayout layout;
    layout.columns = bestColumns(count);
    layout.rows = (count + layout.columns - 1) / layout.columns;
    double const unit = static_cast<double>(std::max(width, layout.columns * smallestPicture)) / 1920;
    layout.margin = rounded(56 * unit);
    layout.gap = rounded(std::clamp(96.0 / layout.columns, 12.0, 32.0) * unit);
    auto const room = width - 2 * layout.margin - (layout.columns - 1) * layout.gap;
    auto const across = std::clamp(room / layout.columns, std::min(smallestPicture, canvas.width), canvas.width);
    double const down = static_cast<double>(across) / canvas.aspect();
    layout.picture = Size2{std::max(across, smallestSide), std::max(rounded(down), smallestSide)}.evened();
    layout.titleSize = std::max(34 * unit, 15.0);
    layout.labelSize = std::clamp(static_cast<double>(layout.picture.width) / 16, 10.0, std::max(22 * unit, 12.0));
    layout.header = rounded(2.5 * layout.titleSize);
    layout.label = rounded(2.6 * layout.labelSize);
    layout.sheet.width = 2 * layout.margin + layout.columns * layout.picture.width + (layout.columns - 1) * layout.gap;
    layout.sheet.height = 2 * layout.margin + layout.header + layout.rows * (layout.picture.height + layout.label) -
                          rounded(0.65 * layout.labelSize);
    return layout;
}

std::vector<double> sheetTimes(int count, double duration, std::int64_t fps) {
    std::vector<double> times;
    auto const rate = static_cast<double>(std::max<std::int64_t>(fps, 1));
    for (int i = 0; i < count; ++i) {
        double const middle = duration * (i + 0.5) / count;
        times.push_back(std::floor(middle * rate + 1e-6) / rate);
    }
    return times;
}

}
