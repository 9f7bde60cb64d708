#pragma once

#include <exception>
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

    /// Good until the next call. Throws `MediaError`: `missing`, `unreadable`, again and again without another look at
    /// the file.
    ImageView ensure(BackgroundStyle::ImageFile const& style, Size2 canvas);

    /// The next call looks again for a picture that could not be read.
    void retry() { failure_ = nullptr; }

    /// Another number for every picture made, and where none could be made.
    int generation() const { return generation_; }

private:
    ProjectPackage package_;
    BackgroundStyle::ImageFile madeFor_;
    Size2 madeForCanvas_;
    Image image_;                // empty where it could not be made
    std::exception_ptr failure_; // why
    int generation_ = 0;
};

}
