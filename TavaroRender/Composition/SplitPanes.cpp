#include <TavaroRender/Composition/Private/SplitPanes.h>

#include <algorithm>
#include <utility>

namespace tavaro {

namespace {

constexpr double widestPadding = 0.035; // of the smaller side; panes are small already
constexpr double gapShare = 0.75;       // of the padding: what belongs together stands closer than its edges
constexpr double seam = 2;              // pixels, what both panes' soft edges need

bool isStacked(SplitArrangement arrangement) {
    return arrangement == SplitArrangement::cameraTop || arrangement == SplitArrangement::cameraBottom;
}

bool cameraIsFirst(SplitArrangement arrangement) {
    return arrangement == SplitArrangement::cameraTop || arrangement == SplitArrangement::cameraLeft;
}

/// Between two panes that stand side by side, however they overlap.
CanvasRect strip(CanvasRect const& a, CanvasRect const& b) {
    auto const& [left, right] = a.x <= b.x ? std::pair(a, b) : std::pair(b, a);
    double const middle = (left.maxX() + right.x) / 2, width = std::max(right.x - left.maxX(), seam);
    return {middle - width / 2, left.y, width, left.height};
}

/// The same rectangle with its axes exchanged.
CanvasRect turned(CanvasRect rect) { return {rect.y, rect.x, rect.height, rect.width}; }

}

SplitPanes splitPanes(CanvasLayout::Split const& split, Size2 canvas, double padding) {
    bool const stacked = isStacked(split.arrangement);
    bool const isFirst = cameraIsFirst(split.arrangement);
    auto const width = static_cast<double>(canvas.width);
    auto const height = static_cast<double>(canvas.height);
    double const margin = std::clamp(padding, 0.0, widestPadding) * std::min(width, height);
    double const gap = margin * gapShare;

    // As if the panes stood side by side; stacked ones are turned.
    double const length = (stacked ? height : width) - 2 * margin - gap;
    double const breadth = (stacked ? width : height) - 2 * margin;
    constexpr double smallest = CanvasLayout::Split::smallestPane;
    double const fraction = std::clamp(split.cameraFraction, smallest, 1 - smallest);
    double const camera = length * fraction;
    double const screen = length - camera;
    CanvasRect first{margin, margin, isFirst ? camera : screen, breadth};
    CanvasRect second{first.maxX() + gap, margin, isFirst ? screen : camera, breadth};
    if (gap <= 0) {
        if (isFirst) second.x -= seam;
        (isFirst ? second : first).width += seam;
    }
    if (stacked) {
        first = turned(first);
        second = turned(second);
    }
    return isFirst ? SplitPanes{first, second} : SplitPanes{second, first};
}

PaneDivider paneDivider(CanvasLayout::Split split, Size2 canvas, double padding) {
    bool const stacked = isStacked(split.arrangement);
    auto const between = [&](double fraction) {
        split.cameraFraction = fraction;
        auto const panes = splitPanes(split, canvas, padding);
        return stacked ? turned(strip(turned(panes.camera), turned(panes.screen))) : strip(panes.camera, panes.screen);
    };
    PaneDivider divider{.rect = between(split.cameraFraction)};
    // It goes evenly with the share, and the ends of its way are beyond what is drawn.
    auto const quarter = between(0.25).center(), way = between(0.75).center() - quarter;
    divider.noCamera = quarter - way * 0.5;
    divider.allCamera = quarter + way * 1.5;
    return divider;
}

CanvasRect paneAside(CanvasRect pane, SplitArrangement arrangement) {
    double const way = (cameraIsFirst(arrangement) ? -0.3 : 0.3);
    (isStacked(arrangement) ? pane.y : pane.x) += way * (isStacked(arrangement) ? pane.height : pane.width);
    return pane;
}

}
