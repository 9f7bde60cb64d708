#include <TavaroRender/Renderer/Private/CameraPass.h>

#include <algorithm>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Style/CameraLook.h>
#include <TavaroCore/Values/CanvasUnit.h>
#include <TavaroRender/Composition/Private/FrameState.h>
#include <TavaroRender/Renderer/Private/UniformNumbers.h>

namespace tavaro {

namespace {

/// The box on the canvas, and the part of the camera's picture that fills it.
struct Framing {
    CanvasRect box;
    NormalizedRect crop;
};

/// The part of a crop that is left when the picture covers the box.
NormalizedRect covering(NormalizedRect crop, CanvasRect const& box, CameraMeans const& means) {
    double const camera = means.width * crop.width / std::max(means.height * crop.height, 1.0);
    double const place = box.width / std::max(box.height, 1.0);
    double const shareX = std::min(place / std::max(camera, 1e-6), 1.0);
    double const shareY = std::min(camera / std::max(place, 1e-6), 1.0);
    return {crop.x + crop.width * (1 - shareX) / 2, crop.y + crop.height * (1 - shareY) / 2, crop.width * shareX,
            crop.height * shareY};
}

/// A pane that reaches the canvas's edge goes on behind it, with what the camera shows there, so that its soft edge
/// lets nothing through and not a pixel of its picture moves.
Framing beyondTheEdges(Framing framing, Size2 canvas, bool isMirrored, CameraMeans const& means) {
    constexpr double reach = 2;
    constexpr double tolerance = 1e-6;
    auto& box = framing.box;
    auto crop = covering(framing.crop, box, means);
    auto const extend = [](double& start, double& length, std::int64_t canvasLength, double& cropStart,
                           double& cropLength, bool isTurned) {
        double const before = start <= tolerance ? reach : 0;
        double const after = start + length >= static_cast<double>(canvasLength) - tolerance ? reach : 0;
        double const share = cropLength / length;
        cropStart -= (isTurned ? after : before) * share;
        cropLength += (before + after) * share;
        start -= before;
        length += before + after;
    };
    extend(box.x, box.width, canvas.width, crop.x, crop.width, isMirrored);
    extend(box.y, box.height, canvas.height, crop.y, crop.height, false);
    return {box, crop};
}

/// A person who was cut out does not float: near the bottom of the canvas the box moves down to stand on it. What is
/// farther above than `padding` is drawn to the ground the less, the farther it is, so nothing jumps.
CanvasRect standing(CanvasRect rect, Size2 canvas, double padding) {
    double const gap = static_cast<double>(canvas.height) - rect.maxY();
    if (gap > 0) rect.y += std::min(gap, std::max(2 * padding - gap, 0.0));
    return rect;
}

Framing framing(FrameState const& state, CameraSettings const& camera, bool isCutOut, CameraMeans const& means) {
    Framing const plain{state.cameraBubbleRect, state.cameraCrop};
    if (isCutOut) {
        auto const side = smallerSide(state.canvas);
        return {standing(plain.box, state.canvas, std::max(camera.padding, 0.0) * side), plain.crop};
    }
    return state.cameraIsFullPane ? beyondTheEdges(plain, state.canvas, camera.mirrored, means) : plain;
}

/// A person without a room has neither corners nor border, and the shadow is the person's own.
void fillChrome(CameraUniforms& pass, FrameState const& state, CameraSettings const& camera) {
    double const unit = canvasUnit(state.canvas);
    double const shadow = std::clamp(camera.shadowOpacity, 0.0, 1.0);
    if (pass.useMatte) {
        pass.shadowOpacity = static_cast<float>(shadow);
        return;
    }
    double const chrome = state.cameraChrome ? state.cameraChromeOpacity : 0;
    pass.cornerRadius = static_cast<float>(state.cameraCornerRadius);
    pass.shadowOpacity = static_cast<float>(shadow * chrome);
    if (camera.borderWidth <= 0 || chrome <= 0) return;
    pass.borderWidth = static_cast<float>(camera.borderWidth * unit);
    pass.borderColor = float4(camera.borderColor, chrome);
}

void fillLook(CameraUniforms& pass, CameraSettings const& camera, bool hasTable) {
    if (camera.look == CameraLook::natural || (camera.look == CameraLook::lut && !hasTable)) return;
    setGrade(pass, grade(camera.look), std::clamp(camera.lookStrength, 0.0, 1.0));
    pass.useLUT = camera.look == CameraLook::lut;
}

}

std::optional<CameraUniforms> cameraPass(FrameState const& state, DemoProject const& project,
                                         CameraMeans const& means) {
    if (means.width <= 0 || means.height <= 0 || !state.cameraSource || state.cameraOpacity <= 0 ||
        state.cameraBubbleRect.isEmpty())
        return std::nullopt;
    auto const& camera = project.camera;
    CameraUniforms pass;
    pass.useMatte = means.hasMatte && state.cameraIsCutOut;
    auto const [box, crop] = framing(state, camera, pass.useMatte, means);
    pass.canvasSize = float2(static_cast<double>(state.canvas.width), static_cast<double>(state.canvas.height));
    pass.center = float2(box.center().x, box.center().y);
    pass.halfSize = float2(box.width / 2, box.height / 2);
    pass.opacity = static_cast<float>(std::clamp(state.cameraOpacity, 0.0, 1.0));
    pass.mirrored = camera.mirrored;
    pass.cropOrigin = float2(crop.x, crop.y);
    pass.cropSize = float2(crop.width, crop.height);
    pass.sharpen = static_cast<float>(std::max(camera.sharpen, 0.0));
    fillChrome(pass, state, camera);
    fillLook(pass, camera, means.hasTable);
    return pass;
}

bool coversCanvas(CameraUniforms const& pass) {
    constexpr float softEdge = 1;
    bool const isWhole = !pass.useMatte && pass.opacity >= 1 && pass.cornerRadius <= 0;
    return isWhole && pass.center.x - pass.halfSize.x <= -softEdge && pass.center.y - pass.halfSize.y <= -softEdge &&
           pass.center.x + pass.halfSize.x >= pass.canvasSize.x + softEdge &&
           pass.center.y + pass.halfSize.y >= pass.canvasSize.y + softEdge;
}

double cameraPixelsPerPixel(CameraUniforms const& pass, int width, int height) {
    double const shownWidth = width * static_cast<double>(pass.cropSize.x);
    double const shownHeight = height * static_cast<double>(pass.cropSize.y);
    // The picture covers the box: of its two scales the larger one counts.
    return std::min(shownWidth / std::max(2.0 * pass.halfSize.x, 1.0),
                    shownHeight / std::max(2.0 * pass.halfSize.y, 1.0));
}

}
