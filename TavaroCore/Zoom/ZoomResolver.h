#pragma once

#include <TavaroCore/Zoom/CameraState.h>
#include <TavaroCore/Zoom/ZoomPresence.h>

#include <optional>
#include <span>

/// The screen camera of a list of zooms. Any frame resolves by itself: scrubbing, export and preview agree. Runs once
/// or twice a frame over the whole list and never allocates. Loupes are left to `LoupeResolver`.
namespace tavaro::ZoomResolver {

/// Overlapping zooms add their magnifications and share the centre by presence. The visible window stays inside the
/// frame. `velocity` is 0. A curve that dips below 0 or an event that shrinks can bring `scale` below 1.
CameraState resolve(std::span<ZoomEvent const> events, double at, std::optional<CentreProvider> centre = {});

/// As `resolve`, with the speed since `dt` seconds earlier; a frame of the picture uses 1/60.
CameraState resolveWithVelocity(std::span<ZoomEvent const> events, double at, double dt,
                                std::optional<CentreProvider> centre = {});

}
