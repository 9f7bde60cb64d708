#include <TavaroVision/Scanning/Private/FindingJoins.h>

#include <TavaroVision/Scanning/PrivacyScan.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavaro {

namespace {

constexpr double bridged = 0.5;   // seconds between findings that are one: it went on, or grew, meanwhile
constexpr double far = 0.08;      // of the picture: how far it goes then
constexpr double overlap = 0.1;   // seconds at most, of the same
constexpr double together = 0.02; // seconds between ends that are one
constexpr double shortestFrame = 1.0 / 240;
constexpr double slack = 0.006; // of the picture

bool holds(NormalizedRect const& outer, NormalizedRect const& inner) {
    return inner.x >= outer.x - slack && inner.y >= outer.y - slack && inner.maxX() <= outer.maxX() + slack &&
           inner.maxY() <= outer.maxY() + slack;
}

/// It stays where it was seen last until it is seen elsewhere, or goes there while it is not seen.
void append(ScreenFinding& before, ScreenFinding const& after) {
    auto const start = std::max(before.end, after.start), rests = std::min(before.end, start - shortestFrame);
    auto const last = areaAt(before, rests);
    std::erase_if(before.keyframes, [&](RedactionKeyframe const& keyframe) { return keyframe.t >= rests; });
    before.keyframes.push_back({rests, last});
    before.keyframes.push_back({start, areaAt(after, start)});
    for (auto const& keyframe : after.keyframes) {
        if (keyframe.t > before.keyframes.back().t) before.keyframes.push_back(keyframe);
    }
}

/// Whether it is below the other from when that begins until it ends.
bool isPartOf(ScreenFinding const& part, ScreenFinding const& whole) {
    bool const isTogether = whole.start < part.end && whole.end >= part.end - together;
    if (!isTogether) return false;
    auto const start = std::max(part.start, whole.start);
    auto const isHeld = [&](double at) {
        return at < start || at > part.end || holds(areaAt(whole, at), areaAt(part, at));
    };
    auto const areHeld = [&](ScreenFinding const& finding) {
        return std::ranges::all_of(finding.keyframes, [&](RedactionKeyframe const& one) { return isHeld(one.t); });
    };
    return isHeld(start) && isHeld(part.end) && areHeld(part) && areHeld(whole);
}

/// From the part's beginning on, as large as the whole.
void absorb(ScreenFinding& whole, ScreenFinding const& part) {
    if (part.typed) whole.typed = whole.typed ? whole.typed->unionWith(*part.typed) : *part.typed;
    if (part.start >= whole.start) return;
    auto const first = areaAt(whole, whole.start), there = areaAt(part, whole.start);
    std::vector<RedactionKeyframe> before;
    for (auto const& keyframe : part.keyframes) {
        if (keyframe.t >= whole.start) break;
        auto const& area = keyframe.rect;
        before.push_back({keyframe.t, NormalizedRect{first.x + area.x - there.x, first.y + area.y - there.y,
                                                     first.width, first.height}
                                          .unionWith(area)});
    }
    whole.keyframes.insert(whole.keyframes.begin(), before.begin(), before.end());
    whole.start = part.start;
}

/// Whether the second seems to be the first, read a little differently.
bool isNextReading(ScreenFinding const& a, ScreenFinding const& b) {
    bool const isNext = a.kind == b.kind && b.start > a.end && b.start <= a.end + bridged;
    if (!isNext) return false;
    auto const last = areaAt(a, a.end), first = areaAt(b, b.start);
    auto const middle = first.center();
    return std::abs(middle.x - last.center().x) < far && std::abs(middle.y - last.center().y) < far &&
           std::min(last.width, first.width) > 0.5 * std::max(last.width, first.width);
}

/// What is read differently from one time to the next, as of a page that is zoomed, is covered in between.
void coverGaps(std::vector<ScreenFinding>& findings) {
    for (auto& finding : findings) {
        auto const next =
            std::ranges::find_if(findings, [&](ScreenFinding const& other) { return isNextReading(finding, other); });
        if (next == findings.end()) continue;
        append(finding, {.start = next->start, .end = next->start, .keyframes = {next->keyframes.front()}});
        finding.end = next->start;
    }
}

}

NormalizedRect areaAt(ScreenFinding const& finding, double seconds) {
    auto const after = std::ranges::upper_bound(finding.keyframes, seconds, {}, &RedactionKeyframe::t);
    if (after == finding.keyframes.begin()) return after->rect;
    auto const& from = after[-1];
    if (after == finding.keyframes.end() || after->t <= from.t) return from.rect;
    auto const part = (seconds - from.t) / (after->t - from.t);
    auto const between = [&](double a, double b) { return a + part * (b - a); };
    auto const &a = from.rect, &b = after->rect;
    return {between(a.x, b.x), between(a.y, b.y), between(a.width, b.width), between(a.height, b.height)};
}

bool goOn(ScreenFinding const& a, ScreenFinding const& b) {
    bool const isSame = a.kind == b.kind && a.textHash == b.textHash;
    if (!isSame || b.start > a.end + bridged || b.start < a.end - overlap) return false;
    return areaAt(a, a.end).touches(areaAt(b, std::max(a.end, b.start)), far);
}

std::vector<ScreenFinding> joinedFindings(std::vector<ScreenFinding> findings) {
    std::ranges::sort(findings, {}, &ScreenFinding::start);
    std::vector<ScreenFinding> joined;
    for (auto& finding : findings) {
        auto const before =
            std::ranges::find_if(joined, [&](ScreenFinding const& other) { return goOn(other, finding); });
        if (before == joined.end()) {
            joined.push_back(std::move(finding));
            continue;
        }
        append(*before, finding);
        before->end = std::max(before->end, finding.end);
        if (!before->typed) before->typed = finding.typed;
    }
    coverGaps(joined);
    return joined;
}

std::vector<ScreenFinding> withoutParts(std::vector<ScreenFinding> findings) {
    auto const widthOf = [](ScreenFinding const& finding) { return finding.keyframes.front().rect.width; };
    std::ranges::sort(findings, {}, widthOf);
    std::vector<ScreenFinding> whole;
    for (auto part = findings.begin(); part != findings.end(); ++part) {
        auto const larger =
            std::find_if(part + 1, findings.end(), [&](ScreenFinding const& one) { return isPartOf(*part, one); });
        if (larger == findings.end()) {
            whole.push_back(std::move(*part));
        } else {
            absorb(*larger, *part);
        }
    }
    return whole;
}

}
