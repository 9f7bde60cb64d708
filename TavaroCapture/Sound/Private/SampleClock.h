#pragma once

#include <deque>

namespace tavaro {

/// At which moments of the media clock a device captured its samples, learnt from readings of both: a line, whose slope
/// is the device's own rate. Readings are some tenths of a millisecond unsure, and now and then far off; the line
/// follows the crowd of the last ten seconds. Where all of the newest agree that the line is wrong, samples were lost
/// or repeated, and the line starts anew from them. One thread.
class SampleClock {
public:
    /// The sample of that number, counted from the stream's first, was captured at that moment.
    void note(double sample, double moment);
    /// Whether there are readings enough to place a sample.
    bool isSure() const { return readings_.size() >= fewest; }

    double momentOf(double sample) const;
    double sampleAt(double moment) const;
    /// Samples that the device captures in the time of one: 1.0002 for one that is 200 ppm fast.
    double rate() const { return 1 / (1 + slope_); }

private:
    static constexpr std::size_t fewest = 3;

    struct Reading {
        double due;    // seconds that so many samples take at the nominal rate
        double excess; // by how much later than that it was
    };
    double expected(double due) const { return offset_ + slope_ * (due - middle_); }
    void forgetOld();
    void fit();
    void fitCrowd(double tolerance);

    std::deque<Reading> readings_; // ascending
    double middle_ = 0;            // of the readings, as `due`
    double offset_ = 0;            // the excess there
    double slope_ = 0;             // seconds of excess a second
};

}
