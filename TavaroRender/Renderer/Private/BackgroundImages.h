#pragma once

#include <string>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Style/BackgroundStyle.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroMedia/Frames/Image.h>

namespace tavaro {

/// The photographic background of a project, made ready for a canvas: brought down to about the canvas's size, so that
/// sampling it does not shimmer, and blurred. The last one made is kept.
class BackgroundImages {
public:
    explicit BackgroundImages(ProjectPackage package) : package_(std::move(package)) {}

    /// Good until the next call. Throws `MediaError`: `missing`, `unreadable`.
    ImageView ensure(BackgroundStyle::ImageFile const& style, Size2 canvas);

    /// Another number for every picture made.
    int generation() const { return generation_; }

private:
    ProjectPackage package_;
    BackgroundStyle::ImageFile madeFor_;
    Size2 madeForCanvas_;
    Image image_;
    int generation_ = 0;
};

}
