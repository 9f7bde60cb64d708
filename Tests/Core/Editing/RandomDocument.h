#pragma once

#include <TavaroCore/Project/DemoProject.h>

#include <random>
#include <string>

namespace tavaro {

/// Documents for property tests. Every time is a multiple of 1/64 s and every speed a power of two, so that edits with
/// such numbers compute without rounding and equal documents are equal to the last digit.
class RandomDocument {
public:
    explicit RandomDocument(unsigned seed) : random_(seed) {}

    /// Up to eight clips of one recording, some fast, slow or held, in any order, of which no two show the same moment,
    /// and up to six items in each list, all inside the edit. The sound of the microphone lies under the picture it was
    /// recorded with.
    DemoProject make();

    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }
    /// On the grid of 1/64 s, from `from` to `to`.
    double time(double from, double to);
    TimeRange range(double within, double shortest = 8.0 / 64);

    static constexpr double recordingSeconds = 256;

private:
    VideoClip clip(double sourceFrom);
    void addItems(DemoProject& project);
    void addSound(DemoProject& project);

    std::mt19937 random_;
};

/// Everything that an edit may change, as text without ids, so that two documents can be compared and read.
std::string drawn(DemoProject const& project);

}
