#pragma once

#include <utility>
#include <vector>

namespace tavaro {

/// Which pixels of a picture are not as they were: for each pair of its rows, which share their chroma in films, all
/// columns from the first to the last of them.
class PictureChanges {
public:
    struct Columns {
        int begin = 0;
        int end = 0; // one past the last

        bool isEmpty() const { return begin >= end; }
    };
    struct Area {
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;
    };

    PictureChanges(int width, int height);

    void addAll();
    /// What of it is outside the picture is left out.
    void add(Area const& area);
    /// Those of a picture of the same size.
    void add(PictureChanges const& other);
    void clear();

    bool isEmpty() const { return firstPair_ >= endPair_; }
    /// Whether they are everything.
    bool isWhole() const;
    /// Pairs of rows outside of which nothing changed: the first, and one past the last.
    std::pair<int, int> pairs() const { return {firstPair_, endPair_}; }
    Columns columns(int pair) const { return columns_[static_cast<std::size_t>(pair)]; }

private:
    void add(int pair, Columns const& columns);

    int width_;
    int height_;
    std::vector<Columns> columns_;
    int firstPair_ = 0;
    int endPair_ = 0;
};

}
