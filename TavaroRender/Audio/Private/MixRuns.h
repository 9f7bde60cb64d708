#pragma once

#include <cstdint>
#include <vector>

#include <TavaroRender/Audio/Private/MixPlan.h>

namespace tavaro {

/// A clip in samples, before it is joined with those that continue it.
struct MixPiece {
    std::size_t source = 0;
    std::int64_t start = 0; // output
    std::int64_t end = 0;
    std::int64_t sourceStart = 0;
    double speed = 1;
    float gain = 1;
    std::int64_t fadeIn = 0;
    std::int64_t fadeOut = 0;
};

/// Cuts a piece to [from, until); false when nothing is left of it.
bool keepInside(MixPiece& piece, std::int64_t from, std::int64_t until);

/// Joins pieces of one track that play through, and gives every other edge its fade: the clip's own, or one so short
/// that it is not heard as one. Two that meet at a cut cross over around it.
std::vector<MixRun> runs(std::vector<MixPiece> pieces);

/// How a track is lowered by `amount` inside windows.
GainEnvelope duckingEnvelope(std::vector<SampleSpan> const& windows, double amount);

}
