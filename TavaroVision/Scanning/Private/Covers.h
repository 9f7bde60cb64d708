#pragma once

#include <TavaroCore/Privacy/FindingHash.h>
#include <TavaroVision/Scanning/PrivacyScan.h>
#include <TavaroVision/Scanning/Private/CoverEdges.h>
#include <TavaroVision/Tracking/Private/TrackedText.h>

#include <cstddef>
#include <deque>
#include <set>
#include <string>
#include <vector>

namespace tavaro {

class BusyRegions;
class ChangedTiles;
class FoundTexts;
struct FoundText;
struct PrivateText;
struct ScreenLine;

/// What is found to be private, each followed by its own pixels from the first frame that shows any of it until they
/// are gone, whatever becomes of the line that it is in.
class Covers {
public:
    Covers(FindingKey const& key, FoundTexts& found, int width, int height)
        : key_(key)
        , found_(found)
        , width_(width)
        , height_(height) {}

    /// For following them; good until the next call.
    std::vector<TrackedText*> places();
    /// Those that are not on the picture of that time any more are done.
    void endLost(double now, GrayView const& picture);
    /// Found in that line of the tracker's last picture. What is covered already is left as it is, unless that was for
    /// another text of the same shape.
    void add(PrivateText const& found, ScreenLine const& line, GrayView const& picture, BackTracker& tracker);

    /// What was found before and is seen again on the history's last picture, where that changed.
    void addKnown(ScreenHistory const& history, ChangedTiles const& tiles);

    /// Of different texts; what was found of one before it was all typed does not count.
    std::size_t count() const { return counted_.size(); }
    /// All of them, by their start; those that go on end then.
    std::vector<ScreenFinding> take(double end, BusyRegions const& regions);

private:
    struct Cover {
        TrackedText place;
        CoverEdges edges;
        ScreenFinding finding;
    };

    bool isBelowAny(PixelBox const& box, int slack) const;
    void begin(Cover&& cover, FoundText const& text);
    Cover* coverOf(PixelBox const& box, int letterHeight);
    bool isElsewhere(Cover const& cover, GrayView const& picture) const;
    bool isTwice(Cover const& cover) const;
    void giveWay(Cover& old, double from);
    void count(Cover const& cover);
    void finish(Cover& cover, double end);

    FindingKey key_;
    FoundTexts& found_;
    int width_;
    int height_;
    std::deque<Cover> alive_;
    std::vector<ScreenFinding> done_;
    std::set<std::string> counted_; // hashes
};

}
