#include <TavaroCore/Privacy/Redaction.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr double onePicture = 1.0 / 60; // seconds; keyframes closer than that are of one picture

}

NormalizedRect RedactionTrack::areaAt(double seconds) const {
    auto const next = std::ranges::upper_bound(keyframes, seconds, {}, &RedactionKeyframe::t);
    if (next == keyframes.begin()) return keyframes.front().rect;
    if (next == keyframes.end()) return keyframes.back().rect;
    auto const& from = *(next - 1);
    double const u = (seconds - from.t) / (next->t - from.t);
    auto const mix = [u](double a, double b) { return a + (b - a) * u; };
    return {mix(from.rect.x, next->rect.x), mix(from.rect.y, next->rect.y), mix(from.rect.width, next->rect.width),
            mix(from.rect.height, next->rect.height)};
}

std::optional<std::size_t> RedactionTrack::keyframeAt(double seconds) const {
    auto const distance = [seconds](RedactionKeyframe const& each) { return std::abs(each.t - seconds); };
    auto const nearest = std::ranges::min_element(keyframes, {}, distance);
    if (nearest == keyframes.end() || distance(*nearest) >= onePicture) return std::nullopt;
    return static_cast<std::size_t>(nearest - keyframes.begin());
}

RedactionKeyframe& RedactionTrack::ensureKeyframe(double seconds) {
    seconds = std::clamp(seconds, std::min(start, end), std::max(start, end));
    if (auto const there = keyframeAt(seconds)) return keyframes[*there];
    auto const area = areaAt(seconds);
    auto const next = std::ranges::upper_bound(keyframes, seconds, {}, &RedactionKeyframe::t);
    return *keyframes.insert(next, {seconds, area});
}

}
