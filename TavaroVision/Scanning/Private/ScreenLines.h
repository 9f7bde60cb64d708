#pragma once

#include <TavaroVision/Reading/ReadText.h>
#include <TavaroVision/Scanning/Private/LineReading.h>
#include <TavaroVision/Tracking/Private/TrackedText.h>

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tavaro {

class ChangedTiles;
class ScreenHistory;
struct PastFrame;

/// A line of text on the screen. The words' boxes are beside its corner.
struct ScreenLine {
    TrackedText place;
    std::vector<ReadWord> words;
    double readAt = 0;
    bool isPrivate = false;  // something private was found in it
    bool isSettled = false;  // it was looked at whether it is to be read again
    bool isDoubtful = false; // it is
};

/// What lines that were on the screen said, so that those that come back are not read again.
class ReadMemory {
public:
    void keep(std::shared_ptr<TextPatch const> const& patch, std::vector<ReadWord> words);
    /// None for a picture that was not read before.
    std::optional<std::vector<ReadWord>> recall(TextPatch const& patch);

private:
    struct Memory {
        std::shared_ptr<TextPatch const> patch;
        std::vector<ReadWord> words;
    };
    std::deque<Memory> memories_; // the newest is the first
    std::size_t bytes_ = 0;       // of their pictures
};

/// The lines of a screen: born when they are read, moved with what scrolls, gone with their pixels. One that took the
/// place of another goes on with it where they look the same: a line that is being typed is as old as its first letter.
class ScreenLines {
public:
    ScreenLines(LineReading const& reader, ReadMemory& memory) : reader_(reader), memory_(memory) {}

    /// For following them; good until the next call.
    std::vector<TrackedText*> places();
    /// Those that are not on the picture of that time any more go. Returns where some were hardly read.
    std::vector<PixelBox> dropLost(double now, GrayView const& picture);
    /// Of those that need not be read at that time.
    std::vector<PixelBox> wholeBoxes(double now) const;

    /// Reads what is new in bands of the history's last picture. Only what `isDue` is looked at. Returns the boxes of
    /// lines with words there, known ones too.
    std::vector<PixelBox> read(ScreenHistory const& history, ChangedTiles const& tiles,
                               std::vector<PixelBox> const& bands, std::function<bool(PixelBox const&)> const& isDue);

    /// Which ones are to be read once more from the picture of that time: those that stand for some time, and seem to
    /// announce what was not found in them. A reader takes noise that nobody sees for another letter.
    std::vector<PixelBox> takeDoubtful(double now);

    std::deque<ScreenLine> const& lines() const { return lines_; }
    void notePrivate(std::size_t line) { lines_[line].isPrivate = true; }
    /// Whether there are others since this was asked last.
    bool takeIsNew();

private:
    struct Fresh;

    bool isElsewhere(ScreenLine const& line, GrayView const& picture) const;
    ScreenLine const* known(TextLine const& line, PixelBox const& box, double now) const;
    std::vector<Fresh> freshLines(PastFrame const& frame, std::vector<PixelBox> const& bands,
                                  std::function<bool(PixelBox const&)> const& isDue, std::vector<PixelBox>& withWords);
    void readFresh(GrayView const& picture, std::vector<Fresh>& fresh);
    void replace(ScreenLine& line);

    LineReading const& reader_;
    ReadMemory& memory_;
    std::deque<ScreenLine> lines_;
    bool isNew_ = false;
};

}
