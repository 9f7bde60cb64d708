#pragma once

#include <TavaroVision/Reading/ReadText.h>
#include <TavaroVision/Scanning/Private/Covers.h>
#include <TavaroVision/Scanning/Private/DirtyTiles.h>
#include <TavaroVision/Scanning/Private/LineReading.h>
#include <TavaroVision/Scanning/Private/ScreenLines.h>
#include <TavaroVision/Tracking/Private/BusyRegions.h>
#include <TavaroVision/Tracking/Private/ChangedTiles.h>
#include <TavaroVision/Tracking/Private/ScreenHistory.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace tavaro {

class FoundTexts;
class ScreenClassifier;

/// What all stretches of a scan share; owned by whoever scans.
struct ScanTools {
    ScreenClassifier& classifier;
    LineReading const& reader;
    ReadMemory& memory;
    FoundTexts& found;
    FindingKey key;
    double interval = 0.25; // seconds, as of a `ScanRequest`
};

/// Looks at the frames of a stretch of a recording, one after the other, and follows what is private on them. Its
/// memory is bounded but for the findings and some bytes of each frame that changes much. One thread.
class ScreenScanner {
public:
    ScreenScanner(ScanTools const& tools, int width, int height);

    /// The next frame, of that size, and when it begins. Throws `VisionError`.
    void show(GrayView const& picture, double time);
    std::size_t found() const { return covers_.count(); }

    /// When the oldest of what was shown and not read came; none where all is read.
    std::optional<double> unreadSince() const { return dirty_.unreadSince(); }

    /// What is unread is read. The last frame ends then.
    std::vector<ScreenFinding> finish(double end);
    /// The same without another look.
    std::vector<ScreenFinding> stop(double end) { return covers_.take(end, regions_); }

private:
    void readDue();
    void classify();

    ScanTools tools_;
    ChangedTiles tiles_;
    BusyRegions regions_;
    DirtyTiles dirty_;
    ScreenHistory history_;
    ScreenLines lines_;
    Covers covers_;
};

}
