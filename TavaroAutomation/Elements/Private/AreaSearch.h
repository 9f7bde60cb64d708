#pragma once

#include <TavaroAutomation/Elements/Private/Accessible.h>

#include <array>
#include <cstddef>
#include <set>
#include <vector>

namespace tavaro::atspi {

/// Finds all that lies side by side in an area, in which one can only ask what is at a point: cells of a sheet, rows of
/// a list, of whatever sizes. The edges of what is known divide the area; where nothing is known, the middle of each
/// part is asked for next. A table of one thousand cells takes about as many questions, in a dozen rounds.
///
///     round 1  ┌─────────────┐   round 2  ┌────┬──┬─────┐
///              │      ?      │            │ ?  │? │  ?  │
///              │             │            ├────┼──┼─────┤
///              │             │            │ ?  │B2│  ?  │
///              └─────────────┘            └────┴──┴─────┘
class AreaSearch {
public:
    struct Point {
        int x = 0;
        int y = 0;
    };

    explicit AreaSearch(Extents const& area) : area_(area) {}

    /// What is there. It may be added more than once.
    void add(Extents const& part);
    /// What a question at that point found. Where that does not lie there, the program is off in its points, and is
    /// asked for others accordingly.
    void learn(Point const& asked, Extents const& found);
    /// Where to ask now that what was found at the points before is added; nothing when all is known. Where nothing was
    /// found, it is asked for on a finer grid, a few times.
    std::vector<Point> next();
    /// Whether there was more to ask than anybody could use.
    bool isCutShort() const { return isCutShort_; }

private:
    struct Part {
        Extents area;
        int halvings = 0; // of a part around it that has nothing in its middle
    };

    class Grid;

    /// By how much answers are off, along one axis.
    struct Offset {
        int least = 1;
        int most = 0; // less than the least: not known

        void narrow(int first, int last);
        int value() const;
    };

    void noteGaps();
    int offset(std::size_t axis) const;
    std::vector<int> edges(int Extents::*begin, int Extents::*length) const;

    Extents area_;
    std::vector<Extents> known_;
    std::set<Extents> added_;
    std::size_t knownBefore_ = 0; // the questions that were asked last
    std::vector<Part> gaps_;      // parts with nothing in their middle
    std::vector<Part> asked_;     // for whose middles was asked last
    std::size_t questions_ = 0;
    std::array<Offset, 2> offsets_; // x, y
    int changes_ = 0;               // of the offsets
    bool hasChanged_ = false;       // since the questions that were asked last
    bool isCutShort_ = false;
};

}
