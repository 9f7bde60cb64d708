#pragma once

#include <array>
#include <optional>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Kernels/CameraUniforms.h>
#include <TavaroRender/Kernels/Private/AxisPlan.h>
#include <TavaroRender/Kernels/Private/CameraFormula.h>
#include <TavaroRender/Kernels/Private/LightCurve.h>

namespace tavaro {

/// Columns `begin` … `end` − 1.
struct PixelSpan {
    int begin = 0;
    int end = 0;
    bool isEmpty() const { return begin >= end; }
    bool operator==(PixelSpan const&) const = default;
};

/// What of a row of the canvas the camera's box touches: `all`, of that what the picture and its border reach, and of
/// that the part that shows the picture alone, without shadow or edge.
struct CameraSpans {
    PixelSpan all;
    PixelSpan box;
    PixelSpan inside;
};

/// What drawing the camera into one frame takes, worked out before its rows.
class CameraPlan {
public:
    void prepare(CameraUniforms const& uniforms, ImageView camera, ImageView matte, CubeLUT const* lut, int canvasWidth,
                 int canvasHeight);

    CameraUniforms const& uniforms() const { return uniforms_; }
    CameraMapping const& mapping() const { return *mapping_; }
    ImageView camera() const { return camera_; }
    ImageView matte() const { return matte_; }
    /// Null where the look has none.
    CubeLUT const* lut() const { return lut_; }
    std::array<LightCurve, 3> const& light() const { return light_; }
    bool isGraded() const;
    bool isSharpened() const { return uniforms_.sharpen > 0.001f; }
    bool isCutOut() const { return isCutOut_; }
    bool hasShadow() const { return uniforms_.shadowOpacity > 0.001f; }
    bool hasBorder() const { return uniforms_.borderWidth > 0.05f && uniforms_.borderColor.w > 0.001f; }

    /// The rows that may change, and the columns; the axis plans count from its first one.
    PixelSpan rows() const { return rows_; }
    PixelSpan columns() const { return columns_; }
    CameraSpans spans(int y) const;

    AxisPlan const& center() const { return center_; }
    AxisPlan const& west() const { return west_; }
    AxisPlan const& east() const { return east_; }
    AxisPlan const& matteColumns() const { return matteColumns_; }
    /// The rows of the camera's picture and of the matte that are shown at `offsetY` from the box's centre.
    AxisPlace cameraRow(float offsetY, float texelsDown = 0) const;
    AxisPlace matteRow(float offsetY) const;
    /// How far the sharpening's neighbours lie, in texels.
    float reach() const { return sharpeningReach(mapping_->spread); }

private:
    void placeBox(int canvasWidth, int canvasHeight);
    void placePerson(int canvasWidth, int canvasHeight);
    void placeColumns();
    float lineReach() const;
    float shadowReach() const { return uniforms_.halfSize.x * 0.45f; }
    float shadowDrop() const { return uniforms_.halfSize.y * 0.06f; }

    CameraUniforms uniforms_;
    std::optional<CameraMapping> mapping_;
    ImageView camera_;
    ImageView matte_;
    CubeLUT const* lut_ = nullptr;
    std::array<LightCurve, 3> light_;
    bool isCutOut_ = false;
    PixelSpan rows_;
    PixelSpan columns_;
    AxisPlan center_, west_, east_, matteColumns_;
};

}
