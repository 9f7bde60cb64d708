#pragma once

#include <TavaroMedia/Audio/StereoSample.h>

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tavaro {

/// How much a picture differs from the one before, in levels of brightness.
struct Motion {
    double at = 0; // moment of the picture
    float amount = 0;
};

/// The moments of sudden, loud sounds; `start` is that of the first sample.
std::vector<double> clapsHeard(std::span<StereoSample const> sound, double start);

/// Claps, or anything else that is seen and heard at once, in the picture and in the sound.
struct ClapMatch {
    int heard = 0;
    int seen = 0;              // of those
    std::optional<double> lag; // seconds by which the picture tells of them later; none: that cannot be told
    double spread = 0;         // seconds: half of the claps are as near to the lag
    std::optional<std::string> doubt = {}; // why there is no lag, as a sentence
};

/// The lag at which what moves suddenly fits what is heard: hands that stop where the sound begins, or a light that
/// goes on with it. Lags of up to half a second either way are found, to about a third of the time between two
/// pictures.
ClapMatch matchedClaps(std::vector<double> const& heard, std::vector<Motion> const& motions);

}
