#include <TavaroRender/Composition/Private/SplitPanes.h>

namespace tavaro {

namespace {

constexpr double widestPadding = 0.035; // of the smaller side; panes are small already
constexpr double gapShare = 0.75;       // of the padding: what belongs together stands closer than its edges
constexpr double smallestPane = 0.1;    // of the canvas
constexpr double seam = 2;              // pixels, what both panes' soft edges need

bool isStacked(SplitArrangement arrangement) {
    return arrangement == SplitArrangement::cameraTop || arrangement == SplitArrangement::cameraBottom;
}

bool cameraIsFirst(SplitArrangement arrangement) {
    return arrangement == SplitArrangement::cameraTop || arrangement == SplitArrangement::cameraLeft;
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
    double const fraction = std::clamp(split.cameraFraction, smallestPane, 1 - smallestPane);
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

CanvasRect paneAside(CanvasRect pane, SplitArrangement arrangement) {
    double const way = (cameraIsFirst(arrangement) ? -0.3 : 0.3);
    (isStacked(arrangement) ? pane.y : pane.x) += way * (isStacked(arrangement) ? pane.height : pane.width);
    return pane;
}

}
