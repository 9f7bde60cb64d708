#include <TavaroRender/Audio/Private/MixRuns.h>

#include <algorithm>
#include <cmath>
#include <span>

namespace tavaro {

namespace {

constexpr std::int64_t edge = audioRate / 200;              // 5 ms; a sound that begins or ends without a fade
constexpr std::int64_t halfCrossing = audioRate * 3 / 1000; // on each side of a cut
constexpr std::int64_t rounding = 1;                        // samples that two clips may be off and still meet
constexpr double sourceRounding = 2;
constexpr double sameSpeed = 1e-9;

bool meets(MixPiece const& piece, MixPiece const& next) { return std::abs(next.start - piece.end) <= rounding; }

/// Whether `next` plays on where the run that began with `first` and ends with `last` stops.
bool continues(MixPiece const& first, MixPiece const& last, MixPiece const& next) {
    if (next.source != first.source || std::abs(next.speed - first.speed) > sameSpeed || !meets(last, next))
        return false;
    if (last.fadeOut > 0 || next.fadeIn > 0) return false;
    auto const expected =
        static_cast<double>(first.sourceStart) + static_cast<double>(next.start - first.start) * first.speed;
    return std::abs(expected - static_cast<double>(next.sourceStart)) <= sourceRounding;
}

struct Edges {
    bool crossesIn = false;
    bool crossesOut = false;
};

MixRun run(std::span<MixPiece const> pieces, Edges edges) {
    auto const& first = pieces.front();
    auto const& last = pieces.back();
    MixRun made{.source = first.source,
                .start = first.start,
                .end = last.end,
                .sourceStart = first.sourceStart,
                .speed = first.speed};
    auto const length = made.end - made.start;
    auto fadeIn = std::min(std::max(first.fadeIn, edge), length);
    auto fadeOut = std::min(std::max(last.fadeOut, edge), length);
    if (fadeIn + fadeOut > length) { // both get their share
        fadeIn = fadeIn * length / (fadeIn + fadeOut);
        fadeOut = length - fadeIn;
    }
    auto const crossing = std::min(halfCrossing, length / 2);
    std::vector<GainPoint> points;
    if (edges.crossesIn) {
        made.start -= halfCrossing;
        made.sourceStart -= std::llround(static_cast<double>(halfCrossing) * made.speed);
        points = {{made.start, 0}, {first.start + crossing, first.gain}};
    } else {
        points = {{made.start, 0}, {made.start + fadeIn, first.gain}};
    }
    for (std::size_t i = 1; i < pieces.size(); ++i) {
        if (pieces[i].gain == pieces[i - 1].gain) continue;
        auto const from = std::max(pieces[i].start - halfCrossing, points.back().at);
        points.push_back({from, pieces[i - 1].gain});
        points.push_back({std::max(pieces[i].start + halfCrossing, from), pieces[i].gain});
    }
    if (edges.crossesOut) {
        made.end += halfCrossing;
        points.push_back({std::max(last.end - crossing, points.back().at), last.gain});
    } else {
        points.push_back({std::max(made.end - fadeOut, points.back().at), last.gain});
    }
    points.push_back({std::max(made.end, points.back().at), 0});
    made.envelope = GainEnvelope(std::move(points));
    return made;
}

}

bool keepInside(MixPiece& piece, std::int64_t from, std::int64_t until) {
    if (piece.start < from) {
        piece.sourceStart += std::llround(static_cast<double>(from - piece.start) * piece.speed);
        piece.start = from;
        piece.fadeIn = 0;
    }
    piece.end = std::min(piece.end, until);
    return piece.start < piece.end;
}

std::vector<MixRun> runs(std::vector<MixPiece> pieces) {
    std::ranges::stable_sort(pieces, {}, &MixPiece::start);
    std::vector<MixRun> result;
    bool crossesIn = false;
    for (std::size_t begin = 0; begin < pieces.size();) {
        auto end = begin + 1;
        while (end < pieces.size() && continues(pieces[begin], pieces[end - 1], pieces[end])) ++end;
        auto const& last = pieces[end - 1];
        bool const crossesOut =
            end < pieces.size() && meets(last, pieces[end]) && last.fadeOut <= 0 && pieces[end].fadeIn <= 0;
        result.push_back(run(std::span(pieces).subspan(begin, end - begin), {crossesIn, crossesOut}));
        crossesIn = crossesOut;
        begin = end;
    }
    std::ranges::stable_sort(result, {}, &MixRun::start);
    return result;
}

}
