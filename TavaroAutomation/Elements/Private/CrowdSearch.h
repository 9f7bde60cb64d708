#pragma once

#include <TavaroAutomation/Elements/Private/AreaSearch.h>

#include <cstddef>
#include <map>
#include <optional>
#include <vector>

namespace tavaro::atspi {

/// Finds those of a widget's children that show, where there are too many to ask for all of them. Children are in order
/// as a rule, so that few questions by their place among the children find one that shows, and its neighbors follow.
/// Where that is not so, what is at points of the part that shows is asked for, and again its neighbors.
///
///     place     0    …    611   612  613  614   615   …    2,499
///     round 1   ?                     ?                      ?
///     round 2         ?  above │shows│shows│ ?  below
class CrowdSearch {
public:
    struct Crowd {
        int count = 0;
        Extents whole;
        Extents shown; // the part of it that shows
        bool isGrid = false;
    };
    struct Questions {
        std::vector<int> places; // among the children
        std::vector<AreaSearch::Point> points;

        bool isEmpty() const { return places.empty() && points.empty(); }
    };

    explicit CrowdSearch(Crowd const& crowd) : crowd_(crowd), area_(crowd.shown) {}

    /// What to ask now that all answers to what was asked before are added; nothing when there is no more to find.
    Questions next();

    void addAtPlace(int place, Extents const& extents);
    /// `place` where it is known.
    void addAtPoint(AreaSearch::Point const& asked, Extents const& extents, std::optional<int> place);

    /// Whether what was found is all that shows, as far as anybody can know.
    bool isWhole() const;

private:
    using Children = std::map<int, std::optional<Extents>>; // by place; nothing for what has not said where it is

    std::vector<int> nextPlaces();
    std::vector<AreaSearch::Point> nextPoints();
    void growFrom(int place, int step, std::vector<int>& wanted);
    std::vector<int> between() const;
    int likelyPlace() const;

    bool isCounted() const;
    bool isCovered() const;
    bool shows(std::optional<Extents> const& extents) const;
    int side(Extents const& extents) const;

    Crowd const crowd_;
    AreaSearch area_;
    Children children_;
    std::size_t shown_ = 0;
    int rounds_ = 0;      // of questions by place without finding anything
    int pointRounds_ = 0; // of questions by point
    bool isCutShort_ = false;
};

}
