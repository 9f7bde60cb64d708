#include <TavaroVision/Scanning/Private/ZoomedFindings.h>

#include <TavaroVision/Scanning/PrivacyScan.h>
#include <TavaroVision/Scanning/Private/FindingJoins.h>

#include <algorithm>
#include <cmath>
#include <optional>

namespace tavaro {

namespace {

constexpr double longest = 0.5, step = 0.1; // seconds
constexpr double aWhile = 0.15;             // seconds of which the way goes on
constexpr double leastZoom = 0.015;         // of the size, from one reading to the next
constexpr double slowest = 0.02;            // of the picture, a second
constexpr double margin = 0.1;              // of the size, since no zoom is steady

enum class Side { before, after };

/// A reading of a text: how large it was, and where it was seen whole first and last.
struct Reading {
    RedactionKeyframe first, last;
    double read = 0; // when it had that size, about
};

bool isInside(NormalizedRect const& area) {
    constexpr double edge = 1e-4;
    return area.x > edge && area.y > edge && area.maxX() < 1 - edge && area.maxY() < 1 - edge;
}

std::optional<Reading> readingOf(ScreenFinding const& finding, Side goesOn) {
    std::optional<Reading> reading;
    for (auto const& keyframe : finding.keyframes) {
        if (!isInside(keyframe.rect)) continue;
        if (!reading) reading = {keyframe, keyframe};
        reading->last = keyframe;
    }
    if (!reading) return reading;
    auto const middle = (reading->first.t + reading->last.t) / 2;
    reading->read = goesOn == Side::after ? std::max(middle, reading->last.t - aWhile)
                                          : std::min(middle, reading->first.t + aWhile);
    return reading;
}

/// Where a text is before its first reading or after its last.
class Way {
public:
    Way(Reading const& known, Reading const& other, UnitPoint2 const& speed)
        : from_(known.read)
        , size_(known.first.rect)
        , speed_(speed)
        , growX_((other.first.rect.width - size_.width) / (other.read - from_))
        , growY_((other.first.rect.height - size_.height) / (other.read - from_)) {}

    /// What of it is on the picture, from that place on.
    NormalizedRect at(double seconds, RedactionKeyframe const& place) const {
        auto const middle = place.rect.center();
        auto const moved = seconds - place.t, grown = seconds - from_;
        auto const x = span(middle.x + moved * speed_.x, size_.width + grown * growX_);
        auto const y = span(middle.y + moved * speed_.y, size_.height + grown * growY_);
        return {x.first, y.first, x.second - x.first, y.second - y.first};
    }

private:
    static std::pair<double, double> span(double middle, double size) {
        auto const half = std::max(0.0, size) * (0.5 + margin);
        return {std::clamp(middle - half, 0.0, 1.0), std::clamp(middle + half, 0.0, 1.0)};
    }

    double from_;
    NormalizedRect size_;
    UnitPoint2 speed_;
    double growX_, growY_; // a second
};

/// How fast it moves at that end of it; by its own way where that is long enough.
UnitPoint2 speedOf(ScreenFinding const& finding, Reading const& known, Reading const& other, Side end) {
    auto a = known.first, b = known.last;
    if (end == Side::after) a.t = std::max(a.t, b.t - aWhile);
    if (end == Side::before) b.t = std::min(b.t, a.t + aWhile);
    bool const isLong = b.t - a.t > aWhile / 4;
    a.rect = isLong ? areaAt(finding, a.t) : known.first.rect;
    b.rect = isLong ? areaAt(finding, b.t) : other.first.rect;
    auto const seconds = isLong ? b.t - a.t : other.first.t - known.first.t;
    auto const from = a.rect.center(), to = b.rect.center();
    return {(to.x - from.x) / seconds, (to.y - from.y) / seconds};
}

/// None where nothing is zoomed there.
std::optional<Way> wayOf(ScreenFinding const& finding, Reading const& known, ScreenFinding const& next, Side end) {
    auto const other = readingOf(next, end == Side::after ? Side::after : Side::before);
    if (!other || std::abs(other->read - known.read) < step / 2) return std::nullopt;
    if (std::abs(other->first.rect.width / known.first.rect.width - 1) < leastZoom) return std::nullopt;
    auto const speed = speedOf(finding, known, *other, end);
    if (std::hypot(speed.x, speed.y) < slowest) return std::nullopt;
    return Way(known, *other, speed);
}

void coverOn(ScreenFinding& finding, Way const& way, RedactionKeyframe const& place, double end) {
    auto const last = finding.end;
    std::erase_if(finding.keyframes, [&](RedactionKeyframe const& keyframe) { return keyframe.t > last; });
    for (double at = last + step / 2; at <= std::min(last + longest, end); at += step) {
        auto const area = way.at(at, place);
        finding.keyframes.push_back({at, area});
        finding.end = at;
        if (area.area() <= 0) return;
    }
}

void coverBack(ScreenFinding& finding, Way const& way, RedactionKeyframe const& place) {
    auto const first = finding.start;
    for (double at = first - step / 2; at >= std::max(first - longest, 0.0); at -= step) {
        auto const area = way.at(at, place);
        finding.keyframes.insert(finding.keyframes.begin(), {at, area});
        finding.start = at;
        if (area.area() <= 0) return;
    }
}

}

std::vector<ScreenFinding> withZooms(std::vector<ScreenFinding> findings, std::vector<ScreenFinding> const& readings,
                                     double end) {
    for (std::size_t i = 0; i < readings.size(); ++i) {
        auto const& piece = readings[i];
        std::vector<ScreenFinding const*> before, after;
        for (auto const& one : readings) {
            if (&one == &piece) continue;
            if (one.start < piece.start && goOn(one, piece)) before.push_back(&one);
            if (one.end > piece.end && goOn(piece, one)) after.push_back(&one);
        }
        if (before.empty() == after.empty()) continue;
        auto const side = after.empty() ? Side::after : Side::before;
        auto const known = readingOf(piece, side);
        std::optional<Way> way; // of readings of the same size none tells
        for (auto const* other : side == Side::after ? before : after) {
            if (known && !way) way = wayOf(piece, *known, *other, side);
        }
        if (!way) continue;
        if (side == Side::after && findings[i].end == piece.end) coverOn(findings[i], *way, known->last, end);
        if (side == Side::before && findings[i].start == piece.start) coverBack(findings[i], *way, known->first);
    }
    return findings;
}

}
