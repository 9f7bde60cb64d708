#pragma once

#include <TavaroCore/Values/Geometry.h>
#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Places/FramePlaces.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

/// A picture of a film as a preview shows it.
struct PreviewPicture {
    std::shared_ptr<Image const> canvas;       // none where nothing could be drawn
    double at = 0;                             // output seconds
    std::int64_t revision = 0;                 // how many revisions had been shown
    Size2 size;                                // in which it is to be seen; the canvas may be coarser
    std::shared_ptr<FramePlaces const> places; // where it has what can be taken hold of; none while the film plays
    std::vector<std::string> problems;         // what it lacks, or why there is none, as sentences
};

/// Hands pictures from the thread that draws them to the one that shows them; the latest wins. Any thread.
class PictureSlot {
public:
    PictureSlot();
    ~PictureSlot();
    PictureSlot(PictureSlot const&) = delete;
    PictureSlot& operator=(PictureSlot const&) = delete;

    /// A canvas to draw into: one that nobody looks at any more, as long as its size is the same. It comes back by
    /// itself when its last owner lets go of it, and three are kept: one is drawn, one waits, one is shown.
    std::shared_ptr<Image> canvas(Size2 size);
    /// True when the one before had been taken: whoever shows them is to be told then, and only then.
    bool put(PreviewPicture picture);
    std::optional<PreviewPicture> take();

private:
    struct Pool;
    struct Waiting;

    std::shared_ptr<Pool> const pool_; // canvases outlive the slot
    std::unique_ptr<Waiting> const waiting_;
};

}
