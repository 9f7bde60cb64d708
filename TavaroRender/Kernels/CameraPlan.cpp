#include <TavaroRender/Kernels/Private/CameraPlan.h>

#include <TavaroRender/Kernels/Private/GradeFormula.h>
#include <TavaroRender/Kernels/Private/PixelStore.h>

namespace tavaro {

namespace {

/// Half the length of the row at `y` from the middle of a rounded box that is larger than `halfSize` by `growth` on
/// every side; below zero where the row misses it.
float halfRow(Float2 halfSize, float radius, float growth, float y) {
    auto const half = halfSize + growth;
    if (!(half.x > 0) || !(std::abs(y) <= half.y)) return -1;
    auto const corner = std::max(radius + growth, 0.0f);
    auto const intoCorner = std::abs(y) - (half.y - corner);
    if (!(intoCorner > 0)) return half.x;
    return half.x - corner + std::sqrt(std::max(corner * corner - intoCorner * intoCorner, 0.0f));
}

PixelSpan columnsAround(float center, float half, int width) {
    if (half < 0) return {};
    return {placeWithin(center - half - 1, width), placeWithin(center + half + 2, width)};
}

PixelSpan joined(PixelSpan a, PixelSpan b) {
    if (a.isEmpty()) return b;
    if (b.isEmpty()) return a;
    return {std::min(a.begin, b.begin), std::max(a.end, b.end)};
}

PixelSpan shared(PixelSpan a, PixelSpan b) { return {std::max(a.begin, b.begin), std::min(a.end, b.end)}; }

}

void CameraPlan::prepare(CameraUniforms const& uniforms, ImageView camera, ImageView matte, CubeLUT const* lut,
                         int canvasWidth, int canvasHeight) {
    uniforms_ = uniforms;
    camera_ = camera;
    matte_ = matte;
    lut_ = uniforms.useLUT != 0 ? lut : nullptr;
    mapping_.emplace(uniforms, camera);
    isCutOut_ = cameraIsCutOut(uniforms, matte);
    auto const gain = lightGain(uniforms);
    light_ = {LightCurve(gain.x), LightCurve(gain.y), LightCurve(gain.z)};
    if (isCutOut_)
        placePerson(canvasWidth, canvasHeight);
    else
        placeBox(canvasWidth, canvasHeight);
    placeColumns();
}

bool CameraPlan::isGraded() const { return uniforms_.lookStrength > leastLook; }

/// From the box's edge to where neither the edge's smoothing nor the border shows any more.
float CameraPlan::lineReach() const { return hasBorder() ? std::max(uniforms_.borderWidth / 2, 0.0f) + 1 : 1; }

void CameraPlan::placeBox(int canvasWidth, int canvasHeight) {
    auto const& u = uniforms_;
    auto const line = lineReach();
    auto const around = [&](float grown, float down) {
        return PixelSpan{placeWithin(u.center.y + down - u.halfSize.y - grown - 1, canvasHeight),
                         placeWithin(u.center.y + down + u.halfSize.y + grown + 2, canvasHeight)};
    };
    rows_ = around(line, 0);
    columns_ = columnsAround(u.center.x, u.halfSize.x + line, canvasWidth);
    if (!hasShadow()) return;
    rows_ = joined(rows_, around(shadowReach(), shadowDrop()));
    columns_ = joined(columns_, columnsAround(u.center.x, u.halfSize.x + shadowReach(), canvasWidth));
}

void CameraPlan::placePerson(int canvasWidth, int canvasHeight) {
    auto const& u = uniforms_;
    auto const drop = std::max(personShadowDrop(u), 0.0f);
    rows_ = {placeWithin(u.center.y - u.halfSize.y - 1, canvasHeight),
             placeWithin(u.center.y + u.halfSize.y + drop + 2, canvasHeight)};
    columns_ = columnsAround(u.center.x, u.halfSize.x, canvasWidth);
}

void CameraPlan::placeColumns() {
    auto const count = std::max(columns_.end - columns_.begin, 0);
    auto const u = [&](int i) {
        auto const offset = pixelCenter(columns_.begin + i, 0).x - uniforms_.center.x;
        return mapping_->uv(mapping_->local({offset, 0})).x;
    };
    center_.fill(count, camera_.width, u);
    if (isSharpened()) {
        auto const step = reach() / static_cast<float>(camera_.width);
        west_.fill(count, camera_.width, [&](int i) { return u(i) - step; });
        east_.fill(count, camera_.width, [&](int i) { return u(i) + step; });
    }
    if (isCutOut_) matteColumns_.fill(count, matte_.width, u);
}

CameraSpans CameraPlan::spans(int y) const {
    auto const& u = uniforms_;
    if (isCutOut_) return {columns_, columns_, {}};
    auto const fromCenter = pixelCenter(0, y).y - u.center.y;
    auto const line = lineReach();
    auto const span = [&](float growth, float down) {
        auto const half = halfRow(u.halfSize, mapping_->radius, growth, fromCenter - down);
        return shared(columnsAround(u.center.x, half, columns_.end), columns_);
    };
    auto const box = span(line, 0);
    CameraSpans result{box, box, {}};
    if (hasShadow()) result.all = joined(box, span(shadowReach(), shadowDrop()));
    if (u.opacity < 1) return result; // the shadow shows through
    auto const half = halfRow(u.halfSize, mapping_->radius, -line - 0.05f, fromCenter);
    if (half < 2) return result;
    result.inside = shared(
        {placeWithin(u.center.x - half + 1, columns_.end), placeWithin(u.center.x + half - 1, columns_.end)}, box);
    return result;
}

AxisPlace CameraPlan::cameraRow(float offsetY, float texelsDown) const {
    auto const v = mapping_->uv(mapping_->local({0, offsetY})).y;
    return axisPlace(v + texelsDown / static_cast<float>(camera_.height), camera_.height);
}

AxisPlace CameraPlan::matteRow(float offsetY) const {
    return axisPlace(mapping_->uv(mapping_->local({0, offsetY})).y, matte_.height);
}

}
