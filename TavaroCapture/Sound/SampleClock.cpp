#include <TavaroCapture/Sound/Private/SampleClock.h>

#include <TavaroMedia/Audio/StereoSample.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tavaro {

namespace {

constexpr double memorySeconds = 10;
constexpr double shiftSeconds = 0.015; // more than readings waver
constexpr double shiftHeldFor = 0.7;
constexpr double leastTolerance = 0.0005;
constexpr int rounds = 3;
// Before there are readings of some seconds, a device most likely runs at its nominal rate: the weight of that, from an
// uncertainty of 0.3 ms a reading and of 200 ppm for a device.
constexpr double nominalWeight = 2.25;

double median(std::vector<double> values) {
    auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

}

void SampleClock::note(double sample, double moment) {
    double const due = sample / audioRate;
    if (!readings_.empty() && due < readings_.back().due) readings_.clear(); // a stream that began anew
    readings_.push_back({due, moment - due});
    forgetOld();
    fit();
}

/// Of what the newest readings contradict together, too.
void SampleClock::forgetOld() {
    double const newest = readings_.back().due;
    std::erase_if(readings_, [&](Reading const& reading) { return reading.due < newest - memorySeconds; });
    auto const isOff = [&](Reading const& reading, double sign) {
        return sign * (reading.excess - expected(reading.due)) > shiftSeconds;
    };
    for (double const sign : {-1.0, 1.0}) {
        auto const agreeing = std::find_if_not(readings_.rbegin(), readings_.rend(), [&](Reading const& reading) {
                                  return isOff(reading, sign);
                              }).base();
        bool const hasShifted = std::distance(agreeing, readings_.end()) >= static_cast<std::ptrdiff_t>(fewest) &&
                                newest - agreeing->due >= shiftHeldFor && agreeing != readings_.begin();
        if (hasShifted) readings_.erase(readings_.begin(), agreeing);
    }
}

void SampleClock::fit() {
    std::vector<double> excesses;
    double sum = 0;
    for (auto const& reading : readings_) sum += reading.due;
    middle_ = sum / static_cast<double>(readings_.size());
    excesses.reserve(readings_.size());
    for (auto const& reading : readings_) excesses.push_back(reading.excess - slope_ * (reading.due - middle_));
    offset_ = median(excesses);
    for (int round = 0; round < rounds; ++round) {
        std::vector<double> errors;
        for (auto const& reading : readings_) errors.push_back(std::abs(reading.excess - expected(reading.due)));
        fitCrowd(std::max(3 * median(errors), leastTolerance));
    }
}

/// The line of least squares through the readings that near the present one.
void SampleClock::fitCrowd(double tolerance) {
    double count = 0, due = 0, excess = 0;
    auto const isNear = [this, tolerance](Reading const& reading) {
        return std::abs(reading.excess - expected(reading.due)) <= tolerance;
    };
    std::vector<Reading> crowd;
    std::copy_if(readings_.begin(), readings_.end(), std::back_inserter(crowd), isNear);
    for (auto const& reading : crowd) ++count, due += reading.due, excess += reading.excess;
    if (count == 0) return;
    due /= count;
    excess /= count;
    double spread = nominalWeight, common = 0;
    for (auto const& reading : crowd) {
        spread += (reading.due - due) * (reading.due - due);
        common += (reading.due - due) * (reading.excess - excess);
    }
    middle_ = due;
    offset_ = excess;
    slope_ = common / spread;
}

double SampleClock::momentOf(double sample) const {
    double const due = sample / audioRate;
    return due + expected(due);
}

double SampleClock::sampleAt(double moment) const {
    return (moment - offset_ + slope_ * middle_) / (1 + slope_) * audioRate;
}

}
