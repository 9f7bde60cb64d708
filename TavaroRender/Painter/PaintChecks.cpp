#include <TavaroRender/Painter/Private/PaintChecks.h>

#include <string>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroRender/Painter/PaintError.h>

namespace tavaro {

namespace {

constexpr std::int64_t smallestSide = 16;
constexpr std::int64_t largestSide = 16384;

}

void requireDrawable(Size2 canvas) {
    auto const isSide = [](std::int64_t side) { return side >= smallestSide && side <= largestSide; };
    if (isSide(canvas.width) && isSide(canvas.height)) return;
    throw PaintError::undrawableSize("a movie is at least " + std::to_string(smallestSide) + " and at most " +
                                     std::to_string(largestSide) + " pixels wide and high, not " +
                                     std::to_string(canvas.width) + " × " + std::to_string(canvas.height));
}

void requireSource(DemoProject const& project, double duration) {
    bool const hasClips = !project.timeline.clips.empty();
    bool const hasCards = project.intro || project.outro;
    if (!(duration > 0) || !(hasClips || hasCards)) throw PaintError::nothingToShow("the timeline shows nothing of it");
    if (duration > longestFilm) throw PaintError::nothingToShow("the timeline is longer than a movie can be");
    auto const size = project.sourceSize;
    if (!hasClips || (size.width >= 1 && size.height >= 1)) return;
    throw PaintError::nothingToShow("the project gives its size as " + std::to_string(size.width) + " × " +
                                    std::to_string(size.height) + " pixels");
}

}
