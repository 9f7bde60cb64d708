#pragma once

#include <TavaroCore/Errors/Error.h>
#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Painter/FramePainter.h>

#include <cstdint>

namespace tavaro {

class ProjectPackage;
struct DemoProject;

/// A time at which the film has no frame.
class NoSuchFrame : public Error {
public:
    NoSuchFrame(double at, double duration);
};

/// The size of a canvas that is scaled down until its longer side has at most so many pixels.
Size2 sizeWithin(Size2 canvas, std::int64_t longestSide);

/// Draws the film that an export of the project writes, at that size.
FramePainter framePainter(DemoProject const& project, ProjectPackage const& package, Size2 size);
/// Shows another revision of the project, or another size; costs nothing where both are the same.
void showFilm(FramePainter& painter, DemoProject const& project, Size2 size);

/// One frame; the end itself still shows the last one. Throws `NoSuchFrame`, and `ExportError` in the words with which
/// an export would fail.
Image filmFrame(FramePainter& painter, double at);

}
