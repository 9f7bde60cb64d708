#include <TavaroVision/Scanning/Private/AnimatedFindings.h>

#include <TavaroVision/Scanning/PrivacyScan.h>
#include <TavaroVision/Scanning/Private/FindingJoins.h>
#include <TavaroVision/Tracking/Private/BusyRegions.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace tavaro {

namespace {

constexpr double longest = 0.6; // seconds of an animation
constexpr double shortestFrame = 1.0 / 240;
constexpr std::size_t fewestFrames = 3;
constexpr double leastShrink = 0.9, wobble = 1.02; // of both sides: in all, and from one frame to the next

using Run = std::vector<BusyRegions::Frame>;

/// Whether both sides are at most that part of the other's. What scrolls to its end changes in fewer
/// and fewer places too, but not like that.
bool isWithin(BusyRegions::Frame const& inner, BusyRegions::Frame const& outer, double part) {
    auto const &a = inner.boxes.front(), &b = outer.boxes.front();
    return a.width <= part * b.width && a.height <= part * b.height;
}

/// As long as it shrinks; nothing where it hardly does.
Run shrinking(Run run) {
    std::size_t count = run.empty() ? 0 : 1;
    while (count < run.size() && isWithin(run[count], run[count - 1], wobble)) ++count;
    run.resize(count);
    bool const isShrinking = count >= fewestFrames && isWithin(run.back(), run.front(), leastShrink);
    return isShrinking ? run : Run{};
}

/// One finding among all.
class Animation {
public:
    Animation(std::vector<ScreenFinding> const& all, BusyRegions const& regions, int width, int height)
        : all_(all)
        , regions_(regions)
        , width_(width)
        , height_(height) {}

    void coverOn(ScreenFinding& finding, double end) const {
        auto const place = pixels(areaAt(finding, finding.end));
        auto run = shrinking(regions_.runAfter(finding.end, place, longest));
        for (auto const& other : all_) {
            if (other.start > finding.end - shortestFrame && goOn(finding, other)) end = std::min(end, other.start);
        }
        std::erase_if(run, [&](auto const& frame) { return frame.time >= end; });
        if (run.empty()) return;
        auto const rests = finding.end - shortestFrame;
        auto const last = areaAt(finding, rests);
        std::erase_if(finding.keyframes, [&](auto const& keyframe) { return keyframe.t >= rests; });
        finding.keyframes.push_back({rests, last});
        for (std::size_t i = 0; i < run.size(); ++i) {
            auto const next = i + 1 < run.size() ? run[i + 1].time : std::min(end, run[i].time + frameOf(run));
            hold(finding.keyframes, run[i], next);
            finding.end = next;
        }
    }

    void coverBack(ScreenFinding& finding) const {
        auto const place = pixels(areaAt(finding, finding.start));
        auto run = shrinking(regions_.runBefore(finding.start, place, longest));
        double begin = 0;
        for (auto const& other : all_) {
            if (other.end < finding.start + shortestFrame && goOn(other, finding)) begin = std::max(begin, other.end);
        }
        std::erase_if(run, [&](auto const& frame) { return frame.time < begin || frame.time >= finding.start; });
        if (run.empty()) return;
        std::ranges::reverse(run);
        std::vector<RedactionKeyframe> before;
        for (std::size_t i = 0; i < run.size(); ++i)
            hold(before, run[i], i + 1 < run.size() ? run[i + 1].time : finding.start);
        auto const first = areaAt(finding, finding.start);
        std::erase_if(finding.keyframes, [&](auto const& keyframe) { return keyframe.t <= finding.start; });
        before.push_back({finding.start, first});
        finding.keyframes.insert(finding.keyframes.begin(), before.begin(), before.end());
        finding.start = run.front().time;
    }

private:
    static double frameOf(Run const& run) { return run.size() > 1 ? run[1].time - run[0].time : shortestFrame; }

    /// It covers all of the region until just before that time.
    void hold(std::vector<RedactionKeyframe>& keyframes, BusyRegions::Frame const& frame, double until) const {
        auto const& box = frame.boxes.front();
        NormalizedRect const area{double(box.x) / width_, double(box.y) / height_, double(box.width) / width_,
                                  double(box.height) / height_};
        keyframes.push_back({frame.time, area});
        if (until - shortestFrame > frame.time) keyframes.push_back({until - shortestFrame, area});
    }

    PixelBox pixels(NormalizedRect const& area) const {
        auto const in = [](double part, int whole) { return static_cast<int>(std::lround(part * whole)); };
        return {in(area.x, width_), in(area.y, height_), in(area.width, width_), in(area.height, height_)};
    }

    std::vector<ScreenFinding> const& all_;
    BusyRegions const& regions_;
    int width_;
    int height_;
};

}

std::vector<ScreenFinding> withAnimations(std::vector<ScreenFinding> findings, BusyRegions const& regions, int width,
                                          int height, double end) {
    auto const before = findings;
    Animation const animation(before, regions, width, height);
    for (auto& finding : findings) {
        animation.coverOn(finding, end);
        animation.coverBack(finding);
    }
    return findings;
}

}
