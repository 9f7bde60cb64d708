#include "TestSounds.h"

#include <TavaroCore/Values/TimeRange.h>
#include <TavaroMedia/Audio/TimeStretch.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

using namespace tavaro;

namespace {

constexpr double speeds[] = {0.25, 0.5, 0.75, 1.25, 1.5, 2, 4};

/// How far sound may be from its place.
double allowed(double speed) { return speed < 0.5 || speed > 2 ? 0.010 : 0.005; }

Sound stretched(Sound const& sound, double speed, std::size_t pieces = 2048) {
    TimeStretch stretch(speed, [&](std::int64_t position, std::span<StereoSample> samples) {
        for (auto& sample : samples) {
            bool const isInside = position >= 0 && position < std::ssize(sound);
            sample = isInside ? sound[static_cast<std::size_t>(position)] : StereoSample{};
            ++position;
        }
    });
    Sound out(static_cast<std::size_t>(static_cast<double>(sound.size()) / speed));
    for (std::size_t at = 0; at < out.size(); at += pieces)
        stretch.read(std::span(out).subspan(at, std::min(pieces, out.size() - at)));
    return out;
}

/// Level over the time, every millisecond, each the root mean square of `window` seconds around.
std::vector<double> envelope(Sound const& sound, double window) {
    std::vector<double> sums(sound.size() + 1);
    for (std::size_t n = 0; n < sound.size(); ++n) sums[n + 1] = sums[n] + double{sound[n].left} * sound[n].left;
    std::vector<double> result(sound.size() * 1000 / audioRate);
    auto const half = static_cast<std::int64_t>(window / 2 * audioRate);
    for (std::size_t i = 0; i < result.size(); ++i) {
        auto const middle = static_cast<std::int64_t>(i) * audioRate / 1000;
        auto const from = std::max<std::int64_t>(middle - half, 0);
        auto const to = std::min<std::int64_t>(middle + half, std::ssize(sound));
        result[i] = std::sqrt((sums[static_cast<std::size_t>(to)] - sums[static_cast<std::size_t>(from)]) / window);
    }
    return result;
}

/// Seconds by which what `sound` has between two times is late in `out`, as far as their envelopes tell.
double lateness(Sound const& sound, Sound const& out, double speed, TimeRange const& range) {
    auto const wanted = envelope(sound, 0.01 * std::max(speed, 0.3));
    auto const found = envelope(out, 0.01);
    double best = 0;
    double most = -1;
    for (int late = -40; late <= 40; ++late) {
        double likeness = 0;
        for (double t = range.start; t < range.end(); t += 0.002 * speed) {
            auto const there = std::llround(t / speed * 1000) + late;
            if (there < 0 || there >= std::ssize(found)) continue;
            likeness += wanted[static_cast<std::size_t>(t * 1000)] * found[static_cast<std::size_t>(there)];
        }
        if (likeness <= most) continue;
        most = likeness;
        best = late / 1000.0;
    }
    return best;
}

/// Words: syllables of a voice, each a word long, behind pauses of many lengths. Gives when each begins.
Sound words(std::vector<double>& begins) {
    std::mt19937 random(5);
    Sound sound(25 * audioRate);
    auto const talk = syllables(60, 0.5);
    for (double t = 0.7; t < 24; t += 1.1 + static_cast<double>(random() % 700) / 1000) {
        begins.push_back(t);
        auto const at = static_cast<std::size_t>(t * audioRate);
        auto const from = static_cast<std::size_t>(random() % 20 * 2.5 * audioRate);
        std::copy_n(talk.begin() + static_cast<std::ptrdiff_t>(from), audioRate * 48 / 100,
                    sound.begin() + static_cast<std::ptrdiff_t>(at));
    }
    return sound;
}

Sound beeps(std::vector<double>& begins) {
    Sound sound(25 * audioRate);
    auto const beep = tone(0.2, 1000);
    for (double t = 0.7; t < 24; t += 1.3137) {
        begins.push_back(t);
        std::ranges::copy(beep, sound.begin() + static_cast<std::ptrdiff_t>(std::llround(t * audioRate)));
    }
    return sound;
}

std::size_t firstAbove(Sound const& sound, double level, double from) {
    auto n = static_cast<std::size_t>(from * audioRate);
    while (n < sound.size() && std::abs(sound[n].left) < level) ++n;
    return n;
}

}

TEST(TimeStretch, wordsAreWhereTheSpeedBringsThem) {
    std::vector<double> begins;
    auto const sound = words(begins);
    for (double const speed : speeds) {
        auto const out = stretched(sound, speed);
        for (double const t : begins)
            EXPECT_LE(std::abs(lateness(sound, out, speed, {t - 0.1, 0.7})), allowed(speed) + 0.001)
                << "at speed " << speed << ", " << t << " s";
    }
}

TEST(TimeStretch, beepsBeginToTheMillisecondAndAreNotDoubled) {
    std::vector<double> begins;
    auto const sound = beeps(begins);
    for (double const speed : speeds) {
        auto const out = stretched(sound, speed);
        for (double const t : begins) {
            auto const first = firstAbove(out, 0.1, t / speed - 0.1);
            EXPECT_NEAR(static_cast<double>(first) / audioRate, t / speed, 0.001) << speed;
            EXPECT_NEAR(lateness(sound, out, speed, {t - 0.1, 0.4}), 0, allowed(speed)) << speed;
        }
    }
}

TEST(TimeStretch, everyClickIsHeardOnceAndAtItsTime) {
    for (double const speed : {0.5, 1.5, 4.0}) {
        std::vector<std::int64_t> places;
        std::mt19937 random(3);
        for (std::int64_t at = 5000; at < 60 * audioRate; at += 5000 + static_cast<std::int64_t>(random() % 40'000))
            places.push_back(at);
        auto const out = stretched(ticks(60, places), speed);
        auto const found = peaks(out, 0.4);
        ASSERT_EQ(found.size(), places.size()) << speed;
        for (std::size_t i = 0; i < found.size(); ++i)
            EXPECT_NEAR(static_cast<double>(found[i]), static_cast<double>(places[i]) / speed, 48) << speed;
    }
}

TEST(TimeStretch, pitchAndLevelStayAndNothingCrackles) {
    for (double const hertz : {90.0, 220.0, 1000.0, 3000.0}) {
        auto const singing = tone(4, hertz);
        for (double const speed : speeds) {
            auto const out = stretched(singing, speed);
            auto const inside = std::span(out).subspan(out.size() / 4, out.size() / 2);
            auto const moment = inside.first(audioRate / 4); // a longer one would ask for a thousandth of the pitch
            EXPECT_NEAR(levelAt(moment, hertz), level(singing), 1) << hertz << " Hz at " << speed;
            EXPECT_NEAR(level(inside), level(singing), 0.5) << hertz << " Hz at " << speed;
            EXPECT_LT(steepest(inside), 1.6 * steepest(singing)) << hertz << " Hz at " << speed;
        }
    }
}

TEST(TimeStretch, sidesStayThemselvesAndPiecesDoNotMatter) {
    auto sound = syllables(5);
    for (auto& sample : sound) sample.right = -sample.left;
    auto const out = stretched(sound, 1.3);
    EXPECT_EQ(stretched(sound, 1.3, 77), out);
    EXPECT_TRUE(std::ranges::all_of(out, [](auto const& s) { return std::abs(s.left + s.right) < 1e-6f; }));
    EXPECT_NEAR(level(out), level(sound), 0.5);
}

TEST(TimeStretch, attacksInAHurryAreNoTroubleAtAnySpeed) {
    std::vector<std::int64_t> places;
    for (std::int64_t at = 1000; at < 2 * audioRate; at += 2400 + at % 7) places.push_back(at);
    for (double const speed : {0.05, 0.93, 7.0, 16.0, 50.0}) {
        auto const out = stretched(sum(ticks(2, places), noise(2, 0.01)), speed);
        EXPECT_LE(peak(out), 0.83) << speed;
        EXPECT_GE(peak(out), 0.6) << speed;
    }
}
