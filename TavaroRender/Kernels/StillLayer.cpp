#include <TavaroRender/Kernels/Private/StillLayer.h>

#include <TavaroRender/Kernels/Private/Background.h>
#include <TavaroRender/Kernels/Private/CompositePixel.h>
#include <TavaroRender/Kernels/Private/PixelStore.h>

namespace tavaro {

namespace {

bool isAnimated(CompositeUniforms const& u) {
    auto const mode = u.bgMode;
    return mode == BackgroundMode::mesh || mode == BackgroundMode::aurora;
}

/// The uniforms that the layer's geometry depends on; the others are set to their defaults. Of the recording only where
/// it is seen counts: one that overflows its place moves behind it without changing the layer.
CompositeUniforms layerKey(CompositeUniforms u, ScreenGeometry const& g) {
    CompositeUniforms const plain;
    bool const hasFrame = u.frameMode != FrameMode::none;
    u.contentOrigin = hasFrame ? g.openingMin : u.clipOrigin;
    u.contentSize = hasFrame ? g.openingMax - g.openingMin : u.clipSize;
    u.time = plain.time;
    u.zoomCenter = plain.zoomCenter;
    u.zoomScale = plain.zoomScale;
    u.blurVector = plain.blurVector;
    u.blurStrength = plain.blurStrength;
    u.blurTaps = plain.blurTaps;
    u.sharpen = plain.sharpen;
    u.loupeCenter = plain.loupeCenter;
    u.loupeRadius = plain.loupeRadius;
    u.loupeMag = plain.loupeMag;
    u.loupePresence = plain.loupePresence;
    u.cropOrigin = plain.cropOrigin;
    u.cropSize = plain.cropSize;
    return u;
}

/// The recording's place on the canvas, asked pixel by pixel. Each set of pixels below is convex.
struct ContentShape {
    CompositeUniforms const& u;
    ScreenGeometry const& g;
    float plainDistance; // to the outer edge, from where no edge or border reaches

    ContentShape(CompositeUniforms const& uniforms, ScreenGeometry const& geometry)
        : u(uniforms)
        , g(geometry)
        , plainDistance(u.borderWidth > 0.05f ? -1.0f - u.borderWidth / 2 : -1.0f) {}

    bool showsContent(Float2 p) const {
        if (u.frameMode != FrameMode::none && !g.openingHolds(p)) return false;
        return coverage(g.distance(p)) > 0.001f;
    }

    /// The recording alone decides the pixel (but for a phone's island, which is not convex with the rest).
    bool isPlain(Float2 p) const {
        if (!showsContent(p) || g.distance(p) > plainDistance) return false;
        return !hasRoundOpening(u) || g.innerDistance(p) <= -1.0f;
    }
};

struct Range {
    int begin = 0;
    int end = 0;
};

/// The run of pixels 0…width−1 for which `holds` is true, when `seed` is in it; empty where it is not.
template<class Holds> Range runAround(int seed, int width, Holds&& holds) {
    if (seed < 0 || seed >= width || !holds(seed)) return {};
    int low = -1;
    int high = seed; // `holds(high)` is true, `holds(low)` is not
    while (high - low > 1) {
        auto const middle = (low + high) / 2;
        (holds(middle) ? high : low) = middle;
    }
    Range range{high, 0};
    low = seed;
    high = width;
    while (high - low > 1) {
        auto const middle = (low + high) / 2;
        (holds(middle) ? low : high) = middle;
    }
    range.end = high;
    return range;
}

/// The middle of the outer shape, or the point of the recording nearest to it, is in a row's run if any point is.
template<class Holds> Range contentRun(ScreenGeometry const& g, int width, Holds&& holds) {
    auto const middle = std::clamp(g.fullCenter.x, g.openingMin.x, std::max(g.openingMin.x, g.openingMax.x));
    auto const seed = placeWithin(middle, width - 1);
    for (auto const candidate : {seed, seed - 1, seed + 1})
        if (auto const range = runAround(candidate, width, holds); range.begin < range.end) return range;
    return {};
}

/// The linear form of laying the screen layer over a pixel that shows the recording.
MixedPixel mixedPixel(CompositeUniforms const& u, ScreenGeometry const& g, int x, int y) {
    auto const p = pixelCenter(x, y);
    auto const d = g.distance(p);
    auto inside = coverage(d);
    float content = 1;
    Float3 added;
    auto const lay = [&](Float3 color, float strength) {
        content *= 1 - strength;
        added = mix(added, color, strength);
    };
    if (hasRoundOpening(u)) {
        auto const frame = frameColor(u, g, p);
        auto const share = smoothstep(-1, 1, g.innerDistance(p));
        lay(rgb(frame), share);
        inside *= mix(1, frame.w, share);
    }
    if (u.frameMode == FrameMode::iphone) lay(islandColor, coverage(islandDistance(u, g, p)));
    if (u.borderWidth > 0.05f) lay(rgb(u.borderColor), coverage(std::abs(d) - u.borderWidth / 2) * u.borderColor.w);
    return {.x = x,
            .content = content * inside,
            .behind = 1 - inside,
            .added = added * (inside * 255.0f),
            .alpha = channelByte(inside)};
}

bool islandReaches(CompositeUniforms const& u, ScreenGeometry const& g, Float2 p) {
    return u.frameMode == FrameMode::iphone && islandDistance(u, g, p) < 1.0f;
}

}

StillLayer::Key StillLayer::keyOf(CompositePixel const& pixel, int width, int height) {
    auto const isImage = backgroundIsImage(pixel.uniforms(), pixel.background());
    auto const background = isImage ? pixel.background() : ImageView{};
    return {layerKey(pixel.uniforms(), pixel.geometry()),
            background.pixels,
            background.width,
            background.height,
            width,
            height,
            pixel.showsScreen()};
}

void StillLayer::prepare(CompositePixel const& pixel, int width, int height, RowBands& rows) {
    auto const key = keyOf(pixel, width, height);
    auto const& uniforms = pixel.uniforms();
    auto const moves = isAnimated(uniforms);
    auto const hasGeometry = isDrawn_ && key == key_;
    if (hasGeometry && (!moves || uniforms.time == time_)) return;
    isDrawn_ = false;
    if (layer_.width() != width || layer_.height() != height) layer_ = Image(width, height);
    rows_.resize(static_cast<std::size_t>(height));
    veils_.resize(moves ? static_cast<std::size_t>(height) : 0);
    BackgroundRows const background(uniforms, pixel.background(), width);
    rows.run(height, [&](int begin, int end) {
        VeilPlanes ownVeil;
        ColorPlanes colors;
        for (int y = begin; y < end; ++y) {
            auto const index = static_cast<std::size_t>(y);
            auto& veil = moves ? veils_[index] : ownVeil;
            if (!hasGeometry) {
                planRow(pixel, rows_[index], y);
                fillVeil(pixel, rows_[index], y, background.isGradient(), veil);
            }
            paintRow(background, rows_[index], y, veil, colors);
        }
    });
    if (!hasGeometry) findContentArea();
    key_ = key;
    time_ = uniforms.time;
    isDrawn_ = true;
}

void StillLayer::planRow(CompositePixel const& pixel, Row& row, int y) const {
    row = {};
    auto const width = layer_.width();
    if (!pixel.showsScreen()) return;
    auto const& u = pixel.uniforms();
    auto const& g = pixel.geometry();
    ContentShape const shape(u, g);
    auto const content = contentRun(g, width, [&](int x) { return shape.showsContent(pixelCenter(x, y)); });
    auto plain = contentRun(g, width, [&](int x) { return shape.isPlain(pixelCenter(x, y)); });
    if (plain.begin >= plain.end) plain = {content.end, content.end};
    for (int x = content.begin; x < content.end; ++x)
        if (x < plain.begin || x >= plain.end || islandReaches(u, g, pixelCenter(x, y)))
            row.mixed.push_back(mixedPixel(u, g, x, y));
    row.contentBegin = content.begin;
    row.contentEnd = content.end;
    row.plainBegin = plain.begin;
    row.plainEnd = plain.end;
}

void StillLayer::fillVeil(CompositePixel const& pixel, Row const& row, int y, bool dithers, VeilPlanes& veil) const {
    auto const& u = pixel.uniforms();
    auto const& g = pixel.geometry();
    auto const hasShadow = pixel.showsScreen() && shadowIsVisible(u);
    veil.resize(static_cast<std::size_t>(layer_.width() - (row.plainEnd - row.plainBegin)));
    std::size_t at = 0;
    for (int x = 0; x < layer_.width(); ++x) {
        if (x == row.plainBegin && row.plainEnd > x) x = row.plainEnd;
        if (x >= layer_.width()) break;
        auto const p = pixelCenter(x, y);
        float behind = 1;
        Float4 added;
        auto const lay = [&](Float3 color, float strength) {
            behind *= 1 - strength;
            added = laidOver(added, color, strength);
        };
        if (hasShadow) lay(rgb(u.shadowColor), shadowStrength(u, g, p));
        auto const isContent = x >= row.contentBegin && x < row.contentEnd;
        if (pixel.showsScreen() && !isContent && g.distance(p) < 1) {
            auto const layer = screenLayer(u, g, pixel.sampler(), p);
            if (layer.w > 0) lay(rgb(layer), layer.w);
        }
        auto const dither = dithers ? backgroundDither(p) * behind : 0.0f;
        veil.behind[at] = behind;
        veil.r[at] = added.x + dither;
        veil.g[at] = added.y + dither;
        veil.b[at] = added.z + dither;
        veil.alpha[at] = added.w;
        ++at;
    }
}

void StillLayer::paintRow(BackgroundRows const& background, Row const& row, int y, VeilPlanes const& veil,
                          ColorPlanes& colors) {
    auto const isOpaque = background.mode() != BackgroundMode::none;
    auto* out = layer_.row(y);
    auto const left = row.plainBegin;
    background.draw(y, 0, left, colors);
    paintVeiled(colors, veil, 0, static_cast<std::size_t>(left), isOpaque, out);
    auto const right = layer_.width() - row.plainEnd;
    background.draw(y, row.plainEnd, layer_.width(), colors);
    paintVeiled(colors, veil, static_cast<std::size_t>(left), static_cast<std::size_t>(right), isOpaque,
                out + 4 * static_cast<std::ptrdiff_t>(row.plainEnd));
}

void StillLayer::findContentArea() {
    contentArea_ = {layer_.width(), layer_.height(), 0, 0};
    for (int y = 0; y < layer_.height(); ++y) {
        auto const& row = rows_[static_cast<std::size_t>(y)];
        if (row.contentBegin >= row.contentEnd) continue;
        contentArea_.left = std::min(contentArea_.left, row.contentBegin);
        contentArea_.right = std::max(contentArea_.right, row.contentEnd);
        contentArea_.top = std::min(contentArea_.top, y);
        contentArea_.bottom = y + 1;
    }
    if (contentArea_.isEmpty()) contentArea_ = {};
}

}
