#pragma once

#include <optional>

#include <TavaroRender/Kernels/CameraUniforms.h>
#include <TavaroRender/Kernels/CompositeUniforms.h>
#include <TavaroRender/Kernels/CursorUniforms.h>
#include <TavaroRender/Renderer/Private/CameraPass.h>

namespace tavaro {

struct DemoProject;
struct FrameState;

/// The whole of a frame but for its pictures and layers, in the compositor's terms. Frames with equal uniforms and
/// equal pictures are equal: what has no part in the drawing is left at its default.
struct FrameUniforms {
    CompositeUniforms composite;
    std::optional<CameraUniforms> camera;
    // Passes over the finished canvas, in order: the click effect, then the pointer; one where they share their point.
    int cursorPasses = 0;
    CursorUniforms cursor[2];

    bool operator==(FrameUniforms const&) const = default;
    /// Whether pointer and click effect are the same.
    bool hasSamePointer(FrameUniforms const& other) const;
};

FrameUniforms frameUniforms(FrameState const& state, DemoProject const& project, CameraMeans const& means = {});

}
