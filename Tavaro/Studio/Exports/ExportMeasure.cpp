#include <Tavaro/Studio/Exports/ExportMeasure.h>

#include <TavaroCore/Export/ExportFile.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tavaro {

namespace {

using Span = ExportEstimate::Span;

constexpr double sameAgain = 1.2; // by how much two exports of one kind differ
constexpr double otherKind = 2.5;

double pixels(ExportMeasure const& measure) {
    return static_cast<double>(measure.width) * static_cast<double>(measure.height);
}

bool isUsable(ExportMeasure const& measure) {
    return measure.frames > 0 && measure.seconds > 0 && pixels(measure) > 0 && measure.bytes > 0 &&
           measure.estimatedBytes > 0;
}

void widen(std::optional<Span>& span, double value, double by) {
    auto const before = span.value_or(Span{std::numeric_limits<double>::infinity(), 0});
    span = Span{std::min(before.least, value / by), std::max(before.most, value * by)};
}

/// The cost of a frame does not quite grow with its pixels.
double doubt(ExportMeasure const& measure, double size) {
    double const ratio = std::max(size / pixels(measure), pixels(measure) / size);
    return sameAgain * std::pow(ratio, 0.25);
}

std::optional<Span> secondsFor(std::span<ExportMeasure const> measures, ExportSettings const& settings, double frames,
                               double certainty) {
    std::optional<Span> span;
    double const size = static_cast<double>(settings.size.width) * static_cast<double>(settings.size.height);
    for (auto const& measure : measures) {
        double const aFrame = measure.seconds / static_cast<double>(measure.frames) * size / pixels(measure);
        widen(span, aFrame * frames, doubt(measure, size) * certainty);
    }
    return span;
}

/// Films of screens that stand still take less than is set aside for them; until one was measured, how much is unknown.
Span bytesFor(std::span<ExportMeasure const> measures, double usual) {
    constexpr double calmest = 0.2, busiest = 1.2;
    std::optional<Span> span;
    for (auto const& measure : measures)
        widen(span, usual * static_cast<double>(measure.bytes) / static_cast<double>(measure.estimatedBytes),
              sameAgain);
    return span.value_or(Span{usual * calmest, usual * busiest});
}

}

std::string ExportMeasure::kindOf(ExportSettings const& settings) {
    return std::string(settings.container == ExportContainer::gif ? "gif" : nameOf(settings.codec));
}

ExportEstimate ExportEstimate::of(ExportSettings const& settings, double duration,
                                  std::span<ExportMeasure const> measures) {
    std::vector<ExportMeasure> usable, alike;
    std::ranges::copy_if(measures, std::back_inserter(usable), isUsable);
    std::ranges::copy_if(usable, std::back_inserter(alike),
                         [kind = ExportMeasure::kindOf(settings)](auto const& each) { return each.kind == kind; });
    double const frames = std::ceil(duration * static_cast<double>(settings.fps));
    auto const usual = static_cast<double>(estimatedFileSize(settings, duration));
    return {.bytes = bytesFor(alike, usual),
            .seconds = alike.empty() ? secondsFor(usable, settings, frames, otherKind)
                                     : secondsFor(alike, settings, frames, 1)};
}

}
