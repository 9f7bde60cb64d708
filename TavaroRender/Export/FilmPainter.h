#pragma once

#include <TavaroRender/Painter/FramePainter.h>

namespace tavaro {

struct ExportSettings;

/// The project as a film with those settings shows it: they decide over those remembered in it, and a format that is a
/// split has its layout.
DemoProject filmProject(DemoProject const& project, ExportSettings const& settings);

/// Draws the frames of the film that an export with those settings writes. Sides are rounded down to even numbers, and
/// an effect that cannot be used fails the frame.
FramePainter filmPainter(DemoProject const& project, ProjectPackage const& package, ExportSettings const& settings,
                         RendererOptions options = {});

}
