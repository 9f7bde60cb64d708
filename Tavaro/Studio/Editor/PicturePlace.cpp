#include <Tavaro/Studio/Editor/PicturePlace.h>

#include <TavaroCore/Timeline/Timeline.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr double rounding = 1e-6; // seconds of an asset that retiming may lose

/// How good a guess is: seconds of the asset that it is away from the picture, then output seconds from the old time.
struct Guess {
    double distance = 0;
    double moved = 0;
    double time = 0;

    bool operator<(Guess const& other) const {
        return distance != other.distance ? distance < other.distance : moved < other.moved;
    }
};

Guess guessIn(VideoClip const& clip, PicturePlace const& place) {
    auto const last = clip.sourceStart + clip.sourceSpan();
    auto const nearest = std::clamp(place.source, clip.sourceStart, last);
    auto const distance = std::abs(nearest - place.source);
    auto const time = clip.speed > 0 ? clip.outputTime(nearest) : clip.start + std::min(place.inside, clip.duration);
    return {distance <= rounding ? 0 : distance, std::abs(time - place.time), time};
}

}

PicturePlace placeAt(Timeline const& timeline, double time) {
    PicturePlace place{.time = time};
    auto const* clip = timeline.clip(time);
    if (!clip) return place;
    place.clip = clip->id;
    place.asset = clip->asset;
    place.inside = time - clip->start;
    place.source = clip->sourceStart + place.inside * clip->speed;
    return place;
}

double timeOf(Timeline const& timeline, PicturePlace const& place) {
    auto const end = timeline.duration();
    std::optional<Guess> best;
    for (auto const& clip : timeline.clips) {
        if (!place.clip || clip.asset != place.asset) continue;
        auto const guess = guessIn(clip, place);
        if (clip.id == *place.clip && guess.distance == 0) return std::clamp(guess.time, 0.0, end);
        if (!best || guess < *best) best = guess;
    }
    return std::clamp(best ? best->time : place.time, 0.0, end);
}

}
