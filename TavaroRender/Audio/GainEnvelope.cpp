#include <TavaroRender/Audio/Private/GainEnvelope.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tavaro {

namespace {

float between(GainPoint const& a, GainPoint const& b, std::int64_t sample) {
    auto const share = static_cast<double>(sample - a.at) / static_cast<double>(b.at - a.at);
    auto const risen = 0.5 - 0.5 * std::cos(std::numbers::pi * share);
    return static_cast<float>(a.gain + (b.gain - a.gain) * risen);
}

void multiply(std::span<StereoSample> samples, float gain) {
    if (gain == 1) return;
    for (auto& sample : samples) sample = {sample.left * gain, sample.right * gain};
}

}

std::vector<SampleSpan> joined(std::vector<SampleSpan> ranges, std::int64_t gap) {
    std::erase_if(ranges, [](SampleSpan const& range) { return range.start >= range.end; });
    std::ranges::sort(ranges, {}, &SampleSpan::start);
    std::vector<SampleSpan> result;
    for (auto const& range : ranges) {
        if (!result.empty() && range.start - result.back().end < gap) {
            result.back().end = std::max(result.back().end, range.end);
        } else {
            result.push_back(range);
        }
    }
    return result;
}

GainEnvelope GainEnvelope::dips(std::vector<SampleSpan> const& ranges, float gain, std::int64_t attack,
                                std::int64_t release) {
    std::vector<GainPoint> points;
    for (auto const& [start, end] : ranges) {
        // Ramps that lie inside take half of a short range each.
        auto const half = (end - start) / 2;
        auto const falling = std::max(attack, -half);
        auto const rising = std::max(release, -half);
        points.push_back({std::min(start, start - falling), 1});
        points.push_back({std::max(start, start - falling), gain});
        points.push_back({std::min(end, end + rising), gain});
        points.push_back({std::max(end, end + rising), 1});
    }
    return GainEnvelope(std::move(points));
}

float GainEnvelope::at(std::int64_t sample) const {
    if (points_.empty()) return 1;
    auto const next = std::ranges::upper_bound(points_, sample, {}, &GainPoint::at);
    if (next == points_.begin()) return points_.front().gain;
    if (next == points_.end()) return points_.back().gain;
    return between(*(next - 1), *next, sample);
}

void GainEnvelope::apply(std::int64_t first, std::span<StereoSample> samples) const {
    if (points_.empty()) return;
    auto next = std::ranges::upper_bound(points_, first, {}, &GainPoint::at);
    for (std::size_t i = 0; i < samples.size();) {
        auto const sample = first + static_cast<std::int64_t>(i);
        while (next != points_.end() && next->at <= sample) ++next;
        auto const left = samples.size() - i;
        auto const count = next == points_.end() ? left : std::min(left, static_cast<std::size_t>(next->at - sample));
        auto const stretch = samples.subspan(i, count);
        i += count;
        if (next == points_.begin()) {
            multiply(stretch, points_.front().gain);
        } else if (next == points_.end() || (next - 1)->gain == next->gain) {
            multiply(stretch, (next - 1)->gain);
        } else {
            auto at = sample;
            for (auto& value : stretch) {
                auto const gain = between(*(next - 1), *next, at++);
                value = {value.left * gain, value.right * gain};
            }
        }
    }
}

}
