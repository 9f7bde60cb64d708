#include "FilmedSigns.h"

#include "../../Tests/Capture/Camera/Timecode.h"
#include "../../Tests/Media/Movie/MovieFrames.h"

#include <TavaroMedia/Audio/AudioReader.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>

namespace tavaro {

namespace {

/// Of the green of every fourth pixel.
double brightness(ImageView picture) {
    double sum = 0;
    for (int y = 0; y < picture.height; y += 2)
        for (int x = 0; x < picture.width; x += 2) sum += picture.row(y)[4 * x + 1];
    return sum / (std::ceil(picture.height / 2.0) * std::ceil(picture.width / 2.0));
}

double nearest(std::vector<double> const& sorted, double moment) {
    auto const after = std::ranges::lower_bound(sorted, moment);
    if (after == sorted.end()) return sorted.back();
    if (after == sorted.begin()) return *after;
    return *after - moment < moment - *(after - 1) ? *after : *(after - 1);
}

}

std::vector<double> flashesIn(std::filesystem::path const& film) {
    constexpr double leastStep = 4; // of 255, over the whole picture; the rest of the screen moves in less
    constexpr double shortest = 0.5;
    std::vector<double> result;
    std::optional<double> before;
    eachFrame(film, [&](double at, ImageView picture) {
        double const now = brightness(picture);
        bool const isNew = result.empty() || at > result.back() + shortest;
        if (before && now - *before > leastStep && isNew) result.push_back(at);
        before = now;
    });
    return result;
}

/// A click lasts a millisecond, which a lossy codec smears by a few; its loudest sample is in its middle.
std::vector<double> clicksIn(std::filesystem::path const& film, Side side) {
    constexpr float loud = 0.2f;
    constexpr std::int64_t apart = audioRate / 10;
    constexpr double clickSeconds = 0.001;
    AudioReader reader(film);
    std::vector<StereoSample> samples(audioRate);
    std::vector<double> result;
    std::int64_t first = -1, last = -apart;
    auto const close = [&] {
        if (first >= 0) result.push_back(static_cast<double>(first + last + 1) / 2 / audioRate - clickSeconds / 2);
        first = -1;
    };
    for (std::int64_t position = 0;; position += audioRate) {
        auto const count = reader.read(position, samples);
        for (std::size_t i = 0; i < count; ++i) {
            if (std::abs(side == Side::left ? samples[i].left : samples[i].right) < loud) continue;
            auto const at = position + static_cast<std::int64_t>(i);
            if (at - last >= apart) close();
            if (first < 0) first = at;
            last = at;
        }
        if (count == samples.size()) continue;
        close();
        return result;
    }
}

std::vector<FilmedCode> codesIn(std::filesystem::path const& movie) {
    std::vector<FilmedCode> result;
    eachFrame(movie, [&](double at, ImageView picture) {
        result.push_back({at, timecode::read(picture).value_or(0)});
    });
    return result;
}

/// By the index alone: a long movie takes minutes to be read.
std::vector<double> framesMissingIn(std::filesystem::path const& movie, int fps) {
    auto const command =
        "ffprobe -v error -select_streams v:0 -show_entries packet=pts_time -of csv=p=0 '" + movie.string() + "'";
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> const lines(popen(command.c_str(), "r"), pclose);
    std::vector<double> result;
    std::int64_t due = 0;
    for (double at = 0; lines && std::fscanf(lines.get(), "%lf%*[^\n]", &at) == 1;) {
        for (; due < std::llround(at * fps); ++due) result.push_back(static_cast<double>(due) / fps);
        ++due;
    }
    return result;
}

double beginOf(std::vector<double> const& filmed, std::vector<double> const& made) {
    constexpr double tolerance = 0.05;
    if (filmed.empty()) return 0;
    double best = 0;
    std::ptrdiff_t most = 0;
    for (double const candidate : made) {
        double const begin = candidate - filmed.front();
        auto const agreeing = std::ranges::count_if(
            filmed, [&](double at) { return std::abs(nearest(made, begin + at) - begin - at) < tolerance; });
        if (agreeing > most) most = agreeing, best = begin;
    }
    return best;
}

std::vector<Lateness> latenesses(std::vector<double> const& filmed, std::vector<double> const& made, double begin) {
    constexpr double furthest = 0.12;
    std::vector<Lateness> result;
    for (double const at : filmed) {
        double const late = at + begin - nearest(made, at + begin);
        if (std::abs(late) < furthest) result.push_back({at, late});
    }
    return result;
}

}
