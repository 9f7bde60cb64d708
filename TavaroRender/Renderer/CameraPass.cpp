#include <TavaroRender/Renderer/CameraPass.h>

#include <algorithm>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Style/CameraLook.h>
#include <TavaroRender/Composition/FrameState.h>

namespace tavaro {

namespace {

Float2 float2(double x, double y) { return {static_cast<float>(x), static_cast<float>(y)}; }

/// A pane that reaches the canvas's edge goes on behind it, so that its soft edge lets nothing through.
CanvasRect beyondTheEdges(CanvasRect rect, Size2 canvas) {
    constexpr double reach = 2;
    constexpr double tolerance = 1e-6;
    auto const extend = [](double& start, double& length, std::int64_t canvasLength) {
        double end = start + length;
        if (end >= static_cast<double>(canvasLength) - tolerance) end += reach;
        if (start <= tolerance) start -= reach;
        length = end - start;
    };
    extend(rect.x, rect.width, canvas.width);
    extend(rect.y, rect.height, canvas.height);
    return rect;
}

/// A person who was cut out does not float: near the bottom of the canvas the box moves down to stand on it. What is
/// farther above than `padding` is drawn to the ground the less, the farther it is, so nothing jumps.
CanvasRect standing(CanvasRect rect, Size2 canvas, double padding) {
    double const gap = static_cast<double>(canvas.height) - rect.maxY();
    if (gap > 0) rect.y += std::min(gap, std::max(2 * padding - gap, 0.0));
    return rect;
}

CanvasRect boxOf(FrameState const& state, CameraSettings const& camera, bool isCutOut) {
    auto const& rect = state.cameraBubbleRect;
    if (isCutOut) {
        auto const side = static_cast<double>(std::min(state.canvas.width, state.canvas.height));
        return standing(rect, state.canvas, std::max(camera.padding, 0.0) * side);
    }
    return state.cameraIsFullPane ? beyondTheEdges(rect, state.canvas) : rect;
}

/// A person without a room has neither corners nor border, and the shadow is the person's own.
void fillChrome(CameraUniforms& pass, FrameState const& state, CameraSettings const& camera) {
    double const unit = static_cast<double>(std::min(state.canvas.width, state.canvas.height)) / 1080;
    double const shadow = std::clamp(camera.shadowOpacity, 0.0, 1.0);
    if (pass.useMatte) {
        pass.shadowOpacity = static_cast<float>(shadow);
        return;
    }
    double const chrome = state.cameraChrome ? state.cameraChromeOpacity : 0;
    pass.cornerRadius = static_cast<float>(state.cameraCornerRadius);
    pass.shadowOpacity = static_cast<float>(shadow * chrome);
    if (camera.borderWidth <= 0 || chrome <= 0) return;
    auto const& color = camera.borderColor;
    pass.borderWidth = static_cast<float>(camera.borderWidth * unit);
    pass.borderColor = {static_cast<float>(color.r), static_cast<float>(color.g), static_cast<float>(color.b),
                        static_cast<float>(color.a * chrome)};
}

void fillLook(CameraUniforms& pass, CameraSettings const& camera, bool hasLUT) {
    if (camera.look == CameraLook::natural || (camera.look == CameraLook::lut && !hasLUT)) return;
    setGrade(pass, grade(camera.look), std::clamp(camera.lookStrength, 0.0, 1.0));
    pass.useLUT = camera.look == CameraLook::lut;
}

}

std::optional<CameraUniforms> cameraPass(FrameState const& state, DemoProject const& project, bool hasMatte,
                                         bool hasLUT) {
    if (!state.cameraSource || state.cameraOpacity <= 0 || state.cameraBubbleRect.isEmpty()) return std::nullopt;
    auto const& camera = project.camera;
    CameraUniforms pass;
    pass.useMatte = hasMatte && state.cameraIsCutOut;
    auto const rect = boxOf(state, camera, pass.useMatte);
    pass.canvasSize = float2(static_cast<double>(state.canvas.width), static_cast<double>(state.canvas.height));
    pass.center = float2(rect.center().x, rect.center().y);
    pass.halfSize = float2(rect.width / 2, rect.height / 2);
    pass.opacity = static_cast<float>(std::clamp(state.cameraOpacity, 0.0, 1.0));
    pass.mirrored = camera.mirrored;
    pass.cropOrigin = float2(state.cameraCrop.x, state.cameraCrop.y);
    pass.cropSize = float2(state.cameraCrop.width, state.cameraCrop.height);
    pass.sharpen = static_cast<float>(std::max(camera.sharpen, 0.0));
    fillChrome(pass, state, camera);
    fillLook(pass, camera, hasLUT);
    return pass;
}

double cameraPixelsPerPixel(CameraUniforms const& pass, int width, int height) {
    double const shownWidth = width * static_cast<double>(pass.cropSize.x);
    double const shownHeight = height * static_cast<double>(pass.cropSize.y);
    // The picture covers the box: of its two scales the larger one counts.
    return std::min(shownWidth / std::max(2.0 * pass.halfSize.x, 1.0),
                    shownHeight / std::max(2.0 * pass.halfSize.y, 1.0));
}

}
