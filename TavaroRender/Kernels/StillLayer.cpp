#include <TavaroRender/Kernels/StillLayer.h>

#include <TavaroRender/Kernels/Background.h>
#include <TavaroRender/Kernels/CompositePixel.h>
#include <TavaroRender/Kernels/PixelStore.h>

namespace tavaro {

namespace {

/// The uniforms that the layer depends on; the others are set to their defaults.
CompositeUniforms layerKey(CompositeUniforms u) {
    CompositeUniforms const plain;
    auto const mode = static_cast<BackgroundMode>(u.bgMode);
    if (mode != BackgroundMode::mesh && mode != BackgroundMode::aurora) u.time = plain.time;
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
        if (u.frameMode != 0 && !g.contentHolds(p)) return false;
        return coverage(g.distance(p)) > 0.001f;
    }

    /// The recording alone decides the pixel (but for a phone's island, which is not convex with the rest).
    bool isPlain(Float2 p) const {
        if (!showsContent(p) || g.distance(p) > plainDistance) return false;
        return static_cast<FrameMode>(u.frameMode) != FrameMode::insetBand || g.innerDistance(p) <= -1.0f;
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
    auto const middle = std::clamp(std::clamp(g.fullCenter.x, g.contentMin.x, std::max(g.contentMin.x, g.contentMax.x)),
                                   -1.0f, static_cast<float>(width) + 1.0f);
    auto const seed = std::clamp(static_cast<int>(std::floor(middle)), 0, width - 1);
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
    if (static_cast<FrameMode>(u.frameMode) == FrameMode::insetBand) {
        auto const band = smoothstep(-1, 1, g.innerDistance(p));
        lay(rgb(u.matColor), band);
        inside *= mix(1, u.matColor.w, band);
    }
    if (static_cast<FrameMode>(u.frameMode) == FrameMode::iphone) lay(islandColor, coverage(islandDistance(u, g, p)));
    if (u.borderWidth > 0.05f) lay(rgb(u.borderColor), coverage(std::abs(d) - u.borderWidth / 2) * u.borderColor.w);
    return {.x = x,
            .content = content * inside,
            .behind = 1 - inside,
            .added = added * (inside * 255.0f),
            .alpha = channelByte(inside)};
}

bool islandReaches(CompositeUniforms const& u, ScreenGeometry const& g, Float2 p) {
    return static_cast<FrameMode>(u.frameMode) == FrameMode::iphone && islandDistance(u, g, p) < 1.0f;
}

}

void StillLayer::prepare(CompositePixel const& pixel, int width, int height,
                         FunctionRef<void(FunctionRef<void(int, int)>)> inBands) {
    auto const key = layerKey(pixel.uniforms());
    auto const background = backgroundIsImage(key, pixel.background()) ? pixel.background() : ImageView{};
    auto const isCurrent = isDrawn_ && key == key_ && background.pixels == keyBackground_ &&
                           background.width == keyBackgroundWidth_ && background.height == keyBackgroundHeight_ &&
                           pixel.showsScreen() == keyShowsScreen_ && layer_.width() == width &&
                           layer_.height() == height;
    if (isCurrent) return;
    isDrawn_ = false;
    if (layer_.width() != width || layer_.height() != height) layer_ = Image(width, height);
    rows_.resize(static_cast<std::size_t>(height));
    inBands([&](int begin, int end) {
        for (int y = begin; y < end; ++y) drawRow(pixel, y);
    });
    findContentArea();
    key_ = key;
    keyBackground_ = background.pixels;
    keyBackgroundWidth_ = background.width;
    keyBackgroundHeight_ = background.height;
    keyShowsScreen_ = pixel.showsScreen();
    isDrawn_ = true;
}

void StillLayer::drawRow(CompositePixel const& pixel, int y) {
    auto& row = rows_[static_cast<std::size_t>(y)];
    row = {};
    auto* out = layer_.row(y);
    auto const width = layer_.width();
    Range content, plain;
    ContentShape const shape(pixel.uniforms(), pixel.geometry());
    if (pixel.showsScreen()) {
        content = contentRun(pixel.geometry(), width, [&](int x) { return shape.showsContent(pixelCenter(x, y)); });
        plain = contentRun(pixel.geometry(), width, [&](int x) { return shape.isPlain(pixelCenter(x, y)); });
    }
    if (plain.begin >= plain.end) plain = {content.end, content.end};
    for (int x = 0; x < width; ++x) {
        auto const p = pixelCenter(x, y);
        if (x < content.begin || x >= content.end) {
            storePixel(out + 4 * x, pixel.withoutLoupe(p));
        } else if (x < plain.begin || x >= plain.end || islandReaches(pixel.uniforms(), pixel.geometry(), p)) {
            storePixel(out + 4 * x, pixel.behindScreen(p));
            row.mixed.push_back(mixedPixel(pixel.uniforms(), pixel.geometry(), x, y));
        }
    }
    row.contentBegin = content.begin;
    row.contentEnd = content.end;
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
