#pragma once

#include <TavaroVision/Reading/ReadText.h>

#include <cstddef>
#include <vector>

namespace tavaro {

class ChangedTiles;

/// The regions of a screen that change from one picture to the next, as windows do that open and close. Of a frame
/// where little changes, nothing is kept.
class BusyRegions {
public:
    struct Frame {
        double time = 0;
        std::vector<PixelBox> boxes; // around tiles that changed near each other; the largest ones
    };

    void add(ChangedTiles const& tiles, double time);

    /// A region around that place and how it changes from that frame on, or back from it: as long as each is there
    /// where the one before was. Frames of at most `longest` seconds.
    std::vector<Frame> runAfter(double time, PixelBox const& place, double longest) const;
    std::vector<Frame> runBefore(double time, PixelBox const& place, double longest) const;

private:
    template<class Next> std::vector<Frame> run(std::size_t first, PixelBox place, double longest, Next next) const;

    std::vector<Frame> frames_; // by their times
};

}
