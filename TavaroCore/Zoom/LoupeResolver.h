#pragma once

#include <TavaroCore/Zoom/LoupeState.h>
#include <TavaroCore/Zoom/ZoomPresence.h>

#include <optional>
#include <span>

/// The lens of a list of zooms. Camera zooms are left to `ZoomResolver`.
namespace tavaro::LoupeResolver {

/// Lenses never blend: the most present one is shown, the earlier one of equals; none below a presence of 0.001.
std::optional<LoupeState> resolve(std::span<ZoomEvent const> events, double at,
                                  std::optional<CentreProvider> centre = {});

}
