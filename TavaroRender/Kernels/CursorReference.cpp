#include <limits>
#include <numbers>

#include <TavaroRender/Kernels/CursorUniforms.h>
#include <TavaroRender/Kernels/Private/CursorShapes.h>
#include <TavaroRender/Kernels/Private/PixelStore.h>
#include <TavaroRender/Kernels/Private/Reference.h>

namespace tavaro {

namespace {

constexpr Float3 white{1, 1, 1};

float distanceToSegment(Float2 p, Float2 a, Float2 b) {
    auto const along = b - a;
    auto const t = saturate(dot(p - a, along) / dot(along, along));
    return length(p - a - along * t);
}

/// Even-odd rule: does the ray to the right of `p` cross this edge?
bool crosses(Float2 p, Float2 a, Float2 b) {
    return (a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x;
}

float arrowDistance(Float2 p) {
    auto nearest = std::numeric_limits<float>::max();
    auto isInside = false;
    for (std::size_t i = 0, j = arrowPoints.size() - 1; i < arrowPoints.size(); j = i++) {
        nearest = std::min(nearest, distanceToSegment(p, arrowPoints[j], arrowPoints[i]));
        if (crosses(p, arrowPoints[i], arrowPoints[j])) isInside = !isInside;
    }
    return isInside ? -nearest : nearest;
}

float ripple(CursorUniforms const& u, float distance) {
    return 1.0f - smoothstep(0.0f, u.clickRadius * 0.35f, std::abs(distance - u.clickRadius));
}

float pulse(CursorUniforms const& u, float distance) {
    return 1.0f - smoothstep(u.clickRadius * 0.6f, u.clickRadius, distance);
}

float ring(CursorUniforms const& u, float distance) {
    auto const width = std::max(u.clickRadius * 0.10f, 1.5f);
    return 1.0f - smoothstep(width / 2, width, std::abs(distance - u.clickRadius));
}

float prism(CursorUniforms const& u, float distance) {
    auto const radius = u.clickRadius;
    auto const width = std::max(radius * 0.16f, 1.5f);
    auto const fromLead = std::abs(distance - radius);
    auto const lead = 1.0f - smoothstep(0.0f, width, fromLead);
    auto const trail = (1.0f - smoothstep(0.0f, width * 0.8f, std::abs(distance - radius * 0.62f))) * 0.65f;
    auto const glow = (1.0f - smoothstep(0.0f, radius * 0.45f, fromLead)) * 0.25f;
    return saturate(lead + trail + glow);
}

Float4 darkened(Float4 pixel, float to, float strength) {
    return withAlpha(mix(rgb(pixel), rgb(pixel) * to, strength), pixel.w);
}

/// Coverage of the pointer's shape and of its outline, averaged along its way.
struct CursorCoverage {
    float fill = 0;
    float outline = 0;
};

CursorCoverage cursorCoverage(CursorUniforms const& u, Float2 offset) {
    auto const taps = cursorTaps(u.velocity);
    auto const stroke = std::max(u.cursorSize * 0.055f, 1.0f);
    CursorCoverage sum;
    for (int i = 0; i < taps; ++i) {
        // The trail lies behind the pointer: from one whole step back to its place.
        auto const k = taps == 1 ? 0.0f : static_cast<float>(i) / static_cast<float>(taps - 1) - 1.0f;
        auto const d = cursorDistance(u, offset - u.velocity * k);
        sum.fill += coverage(d);
        sum.outline += coverage(std::abs(d) - stroke / 2);
    }
    auto const share = 1.0f / static_cast<float>(taps);
    return {sum.fill * share, sum.outline * share};
}

}

float cursorRadius(CursorUniforms const& u) {
    switch (u.style) {
    case CursorShape::circle: return u.cursorSize * 0.34f;
    case CursorShape::filled: return u.cursorSize * 0.30f;
    case CursorShape::outline: return u.cursorSize * 0.34f + std::max(u.cursorSize * 0.09f, 1.5f) / 2;
    case CursorShape::glow: return u.cursorSize * 0.28f;
    default: return u.cursorSize * 0.16f;
    }
}

float cursorDistance(CursorUniforms const& u, Float2 offset) {
    auto const size = u.cursorSize;
    switch (u.style) {
    case CursorShape::arrow: return arrowDistance(offset / size) * size;
    case CursorShape::outline: return std::abs(length(offset) - size * 0.34f) - std::max(size * 0.09f, 1.5f) / 2;
    default: return length(offset) - cursorRadius(u);
    }
}

int cursorTaps(Float2 velocity) {
    auto const travel = length(velocity);
    return travel > 1.5f ? static_cast<int>(std::clamp(travel / 2, 3.0f, 16.0f)) : 1;
}

Float3 hueColor(float turn) {
    auto const channel = [](float h) { return saturate(std::abs(fract(h) * 6.0f - 3.0f) - 1.0f); };
    return {channel(turn), channel(turn + 2.0f / 3.0f), channel(turn + 1.0f / 3.0f)};
}

float clickStrength(CursorUniforms const& u, Float2 offset) {
    auto const distance = length(offset);
    switch (u.clickEffect) {
    case ClickShape::ripple: return ripple(u, distance) * u.clickOpacity;
    case ClickShape::pulse: return pulse(u, distance) * u.clickOpacity;
    case ClickShape::ring: return ring(u, distance) * u.clickOpacity;
    case ClickShape::prism: return prism(u, distance) * u.clickOpacity;
    default: return 0;
    }
}

Float4 withClick(CursorUniforms const& u, Float4 pixel, Float2 point) {
    auto const effect = u.clickEffect;
    if (effect == ClickShape::none || !(u.clickRadius > 0.5f) || !(u.clickOpacity > 0.001f)) return pixel;
    auto const offset = point - u.position;
    if (effect == ClickShape::spotlight) {
        auto const dim = smoothstep(u.clickRadius * 0.7f, u.clickRadius * 2.2f, length(offset));
        return darkened(pixel, 0.45f, dim * u.clickOpacity);
    }
    auto const strength = clickStrength(u, offset);
    if (effect != ClickShape::prism) return laidOver(pixel, rgb(u.clickColor), strength * u.clickColor.w);
    auto const turn = std::atan2(offset.y, offset.x) / (2.0f * std::numbers::pi_v<float>)+u.clickProgress * 0.6f;
    return laidOver(pixel, mix(hueColor(turn), white, 0.18f), strength);
}

Float4 withCursor(CursorUniforms const& u, Float4 pixel, Float2 point) {
    if (!(u.opacity > 0.001f) || !(u.cursorSize > 0.5f)) return pixel;
    auto const offset = point - u.position;
    auto const shape = u.style;
    if (shape == CursorShape::glow) {
        auto const radius = u.cursorSize * 0.28f;
        auto const glow = 1.0f - smoothstep(radius, radius * 3.4f, length(offset));
        pixel = withAlpha(mix(rgb(pixel), rgb(u.fillColor), glow * 0.35f * u.opacity), pixel.w);
    } else if (shape == CursorShape::spotlight) {
        auto const radius = u.cursorSize * 2.6f;
        pixel = darkened(pixel, 0.35f, smoothstep(radius * 0.55f, radius, length(offset)) * u.opacity);
    }
    auto const covered = cursorCoverage(u, offset);
    auto const fill = covered.fill * u.opacity;
    pixel = withAlpha(mix(rgb(pixel), rgb(u.fillColor), fill * u.fillColor.w), std::max(pixel.w, fill));
    auto const outline = covered.outline * u.opacity * u.strokeColor.w;
    return withAlpha(mix(rgb(pixel), rgb(u.strokeColor), outline), pixel.w);
}

void cursorOverlayReference(CursorUniforms const& u, MutableImageView canvas, int rowBegin, int rowEnd) {
    for (int y = rowBegin; y < rowEnd; ++y) {
        auto* p = canvas.row(y);
        for (int x = 0; x < canvas.width; ++x, p += 4) {
            auto const point = pixelCenter(x, y);
            storePixel(p, withCursor(u, withClick(u, loadPixel(p), point), point));
        }
    }
}

}
