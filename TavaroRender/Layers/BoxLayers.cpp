#include <TavaroRender/Layers/Private/BoxLayers.h>

#include <cmath>

#include <TavaroRender/Layers/Private/LayerDrawings.h>

namespace tavaro {

namespace {

/// Sixteenths of a pixel, none of them its middle: each pixel belongs to one of two pieces that meet.
double betweenPixelCentres(double length) { return std::floor(length * 16) / 16 + 1.0 / 32; }

void addPiece(std::vector<PlacedLayer>& layers, LayerSpec& look, LayerSpec::Box const& box, CanvasRect const& rect,
              double opacity) {
    look.kind = box;
    layers.push_back({.look = look, .place = LayerPlace::stretched, .rect = rect, .opacity = opacity});
}

}

void addBox(std::vector<PlacedLayer>& layers, LayerSpec look, CanvasRect const& rect, double opacity) {
    auto const sides = boxPieces(look);
    double const margin = sides.margin;
    double const corner = sides.corner;
    double const x[] = {betweenPixelCentres(rect.x - margin), betweenPixelCentres(rect.x - margin) + corner,
                        betweenPixelCentres(rect.maxX() + margin) - corner, betweenPixelCentres(rect.maxX() + margin)};
    double const y[] = {betweenPixelCentres(rect.y - margin), betweenPixelCentres(rect.y - margin) + corner,
                        betweenPixelCentres(rect.maxY() + margin) - corner, betweenPixelCentres(rect.maxY() + margin)};
    if (x[2] - x[1] < 1 || y[2] - y[1] < 1) {
        auto const width = std::llround(std::max(rect.width, 1.0));
        auto const height = std::llround(std::max(rect.height, 1.0));
        addPiece(layers, look, {.width = width, .height = height},
                 {rect.x - margin, rect.y - margin, static_cast<double>(width) + 2 * margin,
                  static_cast<double>(height) + 2 * margin},
                 opacity);
        return;
    }
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            bool const isMiddle = row == 1 && column == 1;
            if (isMiddle && !look.background) continue;
            CanvasRect const part{x[column], y[row], x[column + 1] - x[column], y[row + 1] - y[row]};
            bool const isOff = part.x >= static_cast<double>(look.canvasWidth) || part.maxX() <= 0 ||
                               part.y >= static_cast<double>(look.canvasHeight) || part.maxY() <= 0;
            if (isOff) continue;
            addPiece(layers, look, {.piece = static_cast<LayerSpec::Box::Piece>(1 + row * 3 + column)}, part, opacity);
        }
    }
}

}
