#pragma once

#include <filesystem>
#include <vector>

/// What a film shows and plays of things whose moments are known.
namespace tavaro {

/// Seconds of the film at which a field turns white.
std::vector<double> flashesIn(std::filesystem::path const& film);

enum class Side { left, right };
/// Seconds of the film at which clicks begin on that side.
std::vector<double> clicksIn(std::filesystem::path const& film, Side side);

struct FilmedCode {
    double at = 0;     // seconds of the movie
    double moment = 0; // of the media clock, as the picture shows it; 0: it cannot be read
};
/// All pictures of a camera that shows its moments.
std::vector<FilmedCode> codesIn(std::filesystem::path const& movie);

/// Seconds of a movie at which it has no frame though its rate has one there.
std::vector<double> framesMissingIn(std::filesystem::path const& movie, int fps);

/// The moment of the media clock that is the film's time 0, to a tenth of a second, by the flashes that were made: the
/// time between two of them is never the same.
double beginOf(std::vector<double> const& filmed, std::vector<double> const& made);

struct Lateness {
    double at = 0;      // seconds of the film
    double seconds = 0; // by how much it is there later than it was made
};
/// Of each sign in the film; those of which nobody knows are left out.
std::vector<Lateness> latenesses(std::vector<double> const& filmed, std::vector<double> const& made, double begin);

}
