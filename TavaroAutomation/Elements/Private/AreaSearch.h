#pragma once

#include <TavaroAutomation/Elements/Private/Accessible.h>

#include <cstddef>
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

    void add(Extents const& part) { known_.push_back(part); }
    /// Where to ask now that what was found at the points before is added; nothing when all is known. Where nothing was
    /// found, it is asked for on a finer grid, a few times.
    std::vector<Point> next();

private:
    struct Part {
        Extents area;
        int halvings = 0; // of a part around it that has nothing in its middle
    };

    class Grid;

    void noteGaps();
    std::vector<int> edges(int Extents::*begin, int Extents::*length) const;

    Extents area_;
    std::vector<Extents> known_;
    std::vector<Part> gaps_;  // parts with nothing in their middle
    std::vector<Part> asked_; // for whose middles was asked last
    std::size_t questions_ = 0;
};

}
