#pragma once

#include <TavaroVision/Reading/ReadText.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace tavaro {

class ChangedTiles;

/// What of the screen changed since it was read, and when it is to be read again: as soon as it is quiet, and once
/// an interval while it is not; where that gave no words, or none that stayed, as of a film in a window, every fourth
/// interval. While much of the screen changes all is read at once: a line that comes into view bit by bit is not read
/// with every bit.
class DirtyTiles {
public:
    /// The interval is in seconds.
    DirtyTiles(ChangedTiles const& tiles, double interval);

    /// What of the picture of that time changed and is not explained by the whole texts given.
    void add(std::vector<PixelBox> const& wholeTexts, double now);

    /// What is there is to be read again.
    void ask(std::vector<PixelBox> const& boxes, double now);

    /// Marks what is due before the next picture comes, which `tiles` knows already. False where nothing is.
    bool markDue(double next);
    /// The same at the end of all.
    bool markAll();
    bool isDue(PixelBox const& box) const;
    /// Full rows of the picture around what is due, from the top.
    std::vector<PixelBox> dueBands() const;

    /// What was due is read, at that time. Words were found in the boxes given.
    void clearDue(std::vector<PixelBox> const& withWords, double now);
    /// When the oldest of what is unread came; none where all is read.
    std::optional<double> unreadSince() const;
    /// What was read in the boxes did not stay.
    void addFleeting(std::vector<PixelBox> const& boxes);

private:
    struct Tile {
        double changedAt = -1e9;
        double dirtySince = 0;
        double readAt = -1e9;
        std::uint8_t fruitless = 0; // readings in a row without a word that stayed
        bool isDirty = false;
        bool isDue = false;
        bool isRestless = false; // due though it still changes
    };

    Tile& tile(int column, int row);
    Tile const& tile(int column, int row) const;
    bool isFlash(double next) const;
    bool isBusy() const;
    static void addFruitless(Tile& tile);
    template<class Look> void eachIn(PixelBox const& box, Look const& look) const;

    ChangedTiles const& changes_;
    double interval_;
    std::vector<Tile> tiles_;
    std::vector<int> covered_; // pixels of each tile that texts explain
    double readAt_ = -1e9;     // any of it
};

}
