#pragma once

#include <Tavaro/Studio/Playback/Passage.h>

#include <TavaroMedia/Audio/TimeStretch.h>
#include <TavaroRender/Export/FilmSound.h>

#include <cstdint>
#include <deque>
#include <optional>
#include <span>

namespace tavaro {

/// A passage of a film as one unbroken row of samples, as often and as fast as it plays, and which sample is which
/// moment of the film. One thread at a time.
class PassageSamples {
public:
    /// `sound` stays the caller's, who may put another one into its place.
    PassageSamples(Passage const& passage, FilmSound& sound);
    PassageSamples(PassageSamples const&) = delete;
    PassageSamples& operator=(PassageSamples const&) = delete;

    /// The next samples; silence behind the end.
    void fill(std::span<StereoSample> samples);
    /// Output seconds of that sample, counted from the first one filled.
    double at(double sample) const;
    /// The passage's end has moved. What was filled stays.
    void setEnd(double end);

private:
    struct Lap {
        std::int64_t first = 0; // sample
        double at = 0;          // output seconds
    };

    void begin(double at);
    std::int64_t left() const;
    void read(std::span<StereoSample> samples);

    Passage passage_;
    FilmSound& sound_;
    std::deque<Lap> laps_; // the last few; never empty
    std::int64_t filled_ = 0;
    std::int64_t position_ = 0; // in the film's sound, of the next sample at the usual speed
    std::optional<TimeStretch> stretch_;
};

}
