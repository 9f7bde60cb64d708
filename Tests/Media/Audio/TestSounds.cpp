#include "TestSounds.h"

#include <TavaroMedia/Audio/AudioFileWriter.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tavaro {

namespace {

constexpr double turn = 2 * std::numbers::pi;

Sound made(double seconds, auto const& at) {
    Sound sound(static_cast<std::size_t>(std::llround(seconds * audioRate)));
    for (std::size_t n = 0; n < sound.size(); ++n) {
        auto const value = static_cast<float>(at(static_cast<double>(n) / audioRate));
        sound[n] = {value, value};
    }
    return sound;
}

double magnitude(StereoSample const& sample) { return std::max(std::abs(sample.left), std::abs(sample.right)); }

double decibels(double power) { return power > 1e-20 ? 10 * std::log10(power) : -200; }

}

Sound tone(double seconds, double hertz, double amplitude) {
    return made(seconds, [&](double t) { return amplitude * std::sin(turn * hertz * t); });
}

Sound noise(double seconds, double amplitude, std::uint64_t seed) {
    auto state = seed * 0x9E3779B97F4A7C15;
    auto const next = [&] {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        return static_cast<double>(state >> 11) / static_cast<double>(1ull << 52) - 1;
    };
    return made(seconds, [&](double) { return amplitude * next(); });
}

Sound syllables(double seconds, double amplitude) {
    return made(seconds, [&](double t) {
        double const phrase = std::fmod(t, 2.5); // a phrase of 1.8 s, then a breath
        double const inside = std::fmod(t, 0.24) / 0.24;
        if (phrase > 1.8) return 0.0;
        double const loudness = std::pow(std::sin(inside * std::numbers::pi), 2);
        double const pitch = 130 + 20 * std::sin(turn * 0.7 * t);
        double voice = 0;
        for (int harmonic = 1; harmonic <= 24; ++harmonic) {
            double const hertz = pitch * harmonic;
            double const formants =
                std::exp(-std::pow((hertz - 600) / 350, 2)) + 0.6 * std::exp(-std::pow((hertz - 1700) / 500, 2));
            voice += (0.05 + formants) / harmonic *
                     std::sin(turn * 130 * harmonic * t - harmonic * 20 / 0.7 * std::cos(turn * 0.7 * t));
        }
        return amplitude * loudness * voice;
    });
}

Sound ticks(double seconds, std::vector<std::int64_t> const& positions) {
    Sound sound(static_cast<std::size_t>(std::llround(seconds * audioRate)));
    constexpr int half = 24; // a hump of a millisecond, its middle at the position
    for (auto const position : positions) {
        for (int i = -half; i <= half; ++i) {
            auto const at = position + i;
            if (at < 0 || at >= std::ssize(sound)) continue;
            auto const value = static_cast<float>(0.8 * std::pow(std::cos(i * std::numbers::pi / 2 / half), 2));
            sound[static_cast<std::size_t>(at)] = {value, value};
        }
    }
    return sound;
}

Sound sum(Sound a, Sound const& b) {
    a.resize(std::max(a.size(), b.size()));
    for (std::size_t n = 0; n < b.size(); ++n) {
        a[n].left += b[n].left;
        a[n].right += b[n].right;
    }
    return a;
}

void writeSound(std::filesystem::path const& file, Sound const& sound, int channels) {
    AudioFileWriter writer(file, AudioFileFormat::floats, channels);
    writer.append(sound);
    writer.finish();
}

Sound soundOf(std::filesystem::path const& file) {
    AudioReader reader(file);
    Sound sound;
    Sound block(10'000);
    while (true) {
        auto const count = reader.read(std::ssize(sound), block);
        sound.insert(sound.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(count));
        if (count < block.size()) return sound;
    }
}

double level(std::span<StereoSample const> sound) {
    double power = 0;
    for (auto const& [left, right] : sound) power += 0.5 * (double{left} * left + double{right} * right);
    return decibels(power / static_cast<double>(std::max<std::size_t>(sound.size(), 1)));
}

double levelAt(std::span<StereoSample const> sound, double hertz) {
    double real = 0, imaginary = 0;
    for (std::size_t n = 0; n < sound.size(); ++n) {
        double const window = 1 - std::cos(turn * static_cast<double>(n) / static_cast<double>(sound.size()));
        double const phase = turn * hertz * static_cast<double>(n) / audioRate;
        real += window * sound[n].left * std::cos(phase);
        imaginary += window * sound[n].left * std::sin(phase);
    }
    double const count = static_cast<double>(sound.size());
    return decibels(2 * (real * real + imaginary * imaginary) / (count * count));
}

double pitch(std::span<StereoSample const> sound) {
    double best = 0, loudest = -1000;
    for (double hertz = 50; hertz < 4000; hertz += 2) {
        if (auto const here = levelAt(sound, hertz); here > loudest) {
            loudest = here;
            best = hertz;
        }
    }
    return best;
}

double peak(std::span<StereoSample const> sound) {
    double largest = 0;
    for (auto const& sample : sound) largest = std::max(largest, magnitude(sample));
    return largest;
}

double steepest(std::span<StereoSample const> sound) {
    double largest = 0;
    for (std::size_t n = 1; n < sound.size(); ++n) {
        largest = std::max({largest, std::abs(double{sound[n].left} - sound[n - 1].left),
                            std::abs(double{sound[n].right} - sound[n - 1].right)});
    }
    return largest;
}

int delay(std::span<StereoSample const> a, std::span<StereoSample const> b, int reach) {
    int best = 0;
    double most = -1;
    auto const length = static_cast<std::ptrdiff_t>(std::min(a.size(), b.size()));
    for (int shift = -reach; shift <= reach; ++shift) {
        double likeness = 0;
        for (std::ptrdiff_t n = reach; n < length - reach; ++n) {
            likeness += double{a[static_cast<std::size_t>(n)].left} * b[static_cast<std::size_t>(n + shift)].left;
        }
        if (likeness > most) {
            most = likeness;
            best = shift;
        }
    }
    return best;
}

std::vector<std::int64_t> peaks(std::span<StereoSample const> sound, double threshold) {
    std::vector<std::int64_t> found;
    for (std::int64_t n = 0; n < std::ssize(sound); ++n) {
        auto const here = magnitude(sound[static_cast<std::size_t>(n)]);
        if (here < threshold) continue;
        bool const isNew = found.empty() || n - found.back() > audioRate / 1000;
        if (isNew)
            found.push_back(n);
        else if (here > magnitude(sound[static_cast<std::size_t>(found.back())]))
            found.back() = n;
    }
    return found;
}

}
