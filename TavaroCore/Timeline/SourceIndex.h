#pragma once

#include <optional>
#include <vector>

namespace tavaro {

struct Timeline;
struct VideoClip;

/// Answers `Timeline::timelineTime` in logarithmic time, for whole recordings. Borrows the timeline.
class SourceIndex {
public:
    /// Source seconds [start, end) that are placed by one clip.
    struct Piece {
        double start = 0;
        double end = 0;
        VideoClip const* clip = nullptr;
    };

    explicit SourceIndex(Timeline const& timeline);

    std::optional<double> timelineTime(double forSource) const;
    /// Ascending and apart from each other.
    std::vector<Piece> const& pieces() const { return pieces_; }

private:
    Timeline const& timeline_;
    std::vector<Piece> pieces_;
};

}
