#include <TavaroRender/Composition/Private/SceneGeometry.h>

#include <cmath>

namespace tavaro {

CanvasRect lerp(CanvasRect const& a, CanvasRect const& b, double t) {
    return {std::lerp(a.x, b.x, t), std::lerp(a.y, b.y, t), std::lerp(a.width, b.width, t),
            std::lerp(a.height, b.height, t)};
}

SinglePane lerp(SinglePane const& a, SinglePane const& b, double t) {
    if (a.content.isEmpty()) return b;
    if (t <= 0) return a;
    if (t >= 1) return b;
    auto const side = [t](double from, double to) { return std::lerp(from, to, t); };
    return {lerp(a.content, b.content, t),
            lerp(a.clip, b.clip, t),
            {side(a.frame.left, b.frame.left), side(a.frame.top, b.frame.top), side(a.frame.right, b.frame.right),
             side(a.frame.bottom, b.frame.bottom)}};
}

CameraFigure glide(CameraFigure const& from, CameraFigure const& to, double progress) {
    if (progress <= 0) return from;
    if (progress >= 1) return to;
    // As colours do that are mixed with their opacity.
    double const opacity = std::lerp(from.opacity, to.opacity, progress);
    double const t = opacity > 0 ? progress * to.opacity / opacity : progress;
    auto const mix = [t](double a, double b) { return std::lerp(a, b, t); };
    auto figure = t < 0.5 ? from : to;
    figure.opacity = opacity;
    figure.rect = lerp(from.rect, to.rect, t);
    figure.radius = mix(from.radius, to.radius);
    figure.chrome = mix(from.chrome, to.chrome);
    figure.overlayShare = mix(from.overlayShare, to.overlayShare);
    figure.crop = {mix(from.crop.x, to.crop.x), mix(from.crop.y, to.crop.y), mix(from.crop.width, to.crop.width),
                   mix(from.crop.height, to.crop.height)};
    figure.aside = {mix(from.aside.x, to.aside.x), mix(from.aside.y, to.aside.y)};
    return figure;
}

CameraFigure appearing(CameraFigure const& figure) {
    constexpr double shrinking = 0.14;
    double const faintness = 1 - std::clamp(figure.opacity, 0.0, 1.0);
    double const k = 1 - shrinking * faintness * figure.chrome;
    auto const middle = figure.rect.center() + figure.aside * faintness;
    auto drawn = figure;
    drawn.rect.width *= k;
    drawn.rect.height *= k;
    drawn.rect.x = middle.x - drawn.rect.width / 2;
    drawn.rect.y = middle.y - drawn.rect.height / 2;
    drawn.radius *= k;
    return drawn;
}

CameraFigure dip(CameraFigure const& from, CameraFigure const& to, double progress) {
    auto figure = progress < 0.5 ? from : to;
    figure.opacity *= std::abs(1 - 2 * std::clamp(progress, 0.0, 1.0));
    return figure;
}

}
