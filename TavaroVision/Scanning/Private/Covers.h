#pragma once

#include <TavaroCore/Privacy/FindingHash.h>
#include <TavaroVision/Scanning/PrivacyScan.h>
#include <TavaroVision/Tracking/Private/TrackedText.h>

#include <cstddef>
#include <deque>
#include <vector>

namespace tavaro {

struct PrivateText;
struct ScreenLine;

/// What is found to be private, each followed by its own pixels from the first frame that shows any of it until they
/// are gone, whatever becomes of the line that it is in.
class Covers {
public:
    Covers(FindingKey const& key, int width, int height) : key_(key), width_(width), height_(height) {}

    /// For following them; good until the next call.
    std::vector<TrackedText*> places();
    /// Those that are not on the picture of that time any more are done.
    void endLost(double now);
    /// Found in that line, on that picture. What is covered already is left as it is.
    void add(PrivateText const& found, ScreenLine const& line, GrayView const& picture);

    std::size_t count() const { return done_.size() + alive_.size(); }
    /// All of them, by their start; those that go on end then.
    std::vector<ScreenFinding> take(double end);

private:
    struct Cover {
        TrackedText place;
        ScreenFinding finding;
    };

    bool isCovered(PixelBox const& box, int letterHeight) const;
    void absorb(Cover& cover);
    void finish(Cover& cover, double end);

    FindingKey key_;
    int width_;
    int height_;
    std::deque<Cover> alive_;
    std::vector<ScreenFinding> done_;
};

/// Findings of one text that meet in time and place are one.
std::vector<ScreenFinding> joinedFindings(std::vector<ScreenFinding> findings);

}
