#pragma once

#include <TavaroVision/Reading/ReadText.h>
#include <TavaroVision/Tracking/Private/ShiftSearch.h>
#include <TavaroVision/Tracking/Private/TextPatch.h>

#include <memory>
#include <span>
#include <vector>

namespace tavaro {

class ChangedTiles;
class ScreenHistory;

/// Where the corner of a patch is from a frame on, in whole pixels.
struct PathPoint {
    double time = 0; // seconds, of the frame
    int x = 0;
    int y = 0;
    bool operator==(PathPoint const&) const = default;
};

/// On the way between two points of a path that has one at least; held before the first and after the last.
PathPoint placeAt(std::vector<PathPoint> const& path, double time);

/// Adds where it is from that time on. Until just before it rests where it was, if pictures are rare, and else from
/// `before` on it glides there: the last time at which it was seen.
void addStep(std::vector<PathPoint>& path, PathPoint const& point, double before);

/// What moves when it is first seen came from where nobody knew it yet, and what moves when it is seen last goes on:
/// such a path begins two pictures earlier, and goes on for two.
void extendBack(std::vector<PathPoint>& path);
void extendOn(std::vector<PathPoint>& path);

/// A piece of text on the screen, followed from the first frame that shows it.
struct TrackedText {
    std::shared_ptr<TextPatch const> patch;
    int x = 0; // its corner at present
    int y = 0;
    Shift velocity;              // of the last picture
    TextPresence presence;       // on the present picture
    bool isPrivate = false;      // is looked for before all others
    bool isSearched = false;     // all over the picture, in vain, since most of it was seen last
    std::vector<double> since;   // of each cell: seconds of the first frame that shows it
    std::vector<PathPoint> path; // ascending; between two points it moves steadily

    PixelBox box() const { return {x, y, patch->width(), patch->height()}; }
    /// What a step of the screen does to it: `before` is the time of the frame that shows it where it was.
    void moveTo(int newX, int newY, double before, double now);
};

/// The picture that comes next.
struct NextPicture {
    GrayView picture;
    ChangedTiles const& tiles;
    double before = 0; // seconds: the last frame
    double now = 0;
};

/// Looks for each text on the next picture: where it is, where others went, and where it is found. What is not legible
/// any more has a presence that says so. Returns by how much things moved.
std::vector<Shift> follow(std::span<TrackedText* const> texts, NextPicture const& next,
                          std::span<Shift const> lastShifts);

/// Follows texts of the history's last frame back to where they came from. One of these serves all texts of a frame:
/// what is learned about the motion of one helps the next.
class BackTracker {
public:
    /// The tiles know what stood still before the history begins.
    BackTracker(ScreenHistory const& history, ChangedTiles const& tiles);

    /// The text with its path and the cells' times.
    TrackedText trackedFrom(std::shared_ptr<TextPatch const> patch, int x, int y);

private:
    bool stepBack(TrackedText& text, std::size_t frame);
    void extendStill(TrackedText& text) const;
    bool searchBack(TrackedText& text, std::size_t frame);

    ScreenHistory const& history_;
    ChangedTiles const& tiles_;
    std::vector<std::vector<Shift>> shifts_; // of each frame of the history, since the one before
    int failures_ = 0;                       // searches that found nothing
};

}
