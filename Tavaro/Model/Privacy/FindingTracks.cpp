#include <Tavaro/Model/Privacy/Private/FindingTracks.h>

#include <Tavaro/Model/Privacy/KeptScan.h>
#include <Tavaro/Model/Privacy/Private/SourceRanges.h>

#include <TavaroCore/Records/UUID.h>
#include <TavaroVision/Scanning/PrivacyScan.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>
#include <utility>

namespace tavaro {

namespace {

using Tracks = std::vector<RedactionTrack>;

constexpr double nearness = 0.02; // of the picture's sides
constexpr double joint = 0.1;     // seconds between tracks of which one goes on with the other
constexpr double shortestFrame = 1.0 / 240;

TimeRange spanOf(RedactionTrack const& track) { return {track.start, track.duration()}; }

/// Whether both cover about the same place at a time.
bool meets(RedactionTrack const& a, RedactionTrack const& b) {
    double const from = std::max(a.start, b.start), to = std::min(a.end, b.end);
    if (to < from) return false;
    double const at = (from + to) / 2;
    return a.areaAt(at).touches(b.areaAt(at), nearness);
}

/// Its keyframes reach from its beginning to its end, also when somebody trims it.
RedactionTrack trackOf(ScreenFinding const& finding, FindingsOfMovie const& found) {
    RedactionTrack track{.kind = finding.kind,
                         .label = finding.masked.empty() ? finding.label : finding.masked,
                         .textHash = finding.textHash,
                         .asset = found.asset,
                         .start = finding.start,
                         .end = finding.end,
                         .keyframes = finding.keyframes,
                         .style = found.style,
                         .isAutomatic = true};
    if (track.keyframes.back().t < track.end) track.keyframes.push_back({track.end, track.areaAt(track.end)});
    return track;
}

/// As it was before somebody trimmed it.
RedactionTrack untrimmed(RedactionTrack track) {
    track.start = std::min(track.start, track.keyframes.front().t);
    track.end = std::max(track.end, track.keyframes.back().t);
    return track;
}

RedactionTrack part(RedactionTrack const& track, TimeRange const& range) {
    auto piece = track;
    piece.start = range.start;
    piece.end = range.end();
    piece.keyframes = {{range.start, track.areaAt(range.start)}};
    for (auto const& each : track.keyframes)
        if (each.t > range.start && each.t < range.end()) piece.keyframes.push_back(each);
    piece.keyframes.push_back({range.end(), track.areaAt(range.end())});
    return piece;
}

/// The second goes on with the first, and keeps its name. What is covered stays where it is until then.
RedactionTrack joined(RedactionTrack const& first, RedactionTrack second) {
    auto const rests = std::max(first.start, second.keyframes.front().t - shortestFrame);
    auto before = part(first, {first.start, rests - first.start});
    before.keyframes.insert(before.keyframes.end(), second.keyframes.begin(), second.keyframes.end());
    second.keyframes = std::move(before.keyframes);
    second.start = first.start;
    return second;
}

/// Also where both are there for some time.
bool goesOn(RedactionTrack const& first, RedactionTrack const& second) {
    bool const isNext = hidesTheSame(first, second) && first.isEnabled == second.isEnabled &&
                        first.start <= second.start && first.end <= second.end && second.start - first.end <= joint;
    return isNext && first.areaAt(std::min(first.end, second.start)).touches(second.areaAt(second.start), nearness);
}

bool isInside(RedactionTrack const& inner, RedactionTrack const& outer) {
    bool const isWithin = hidesTheSame(inner, outer) && inner.isEnabled == outer.isEnabled &&
                          outer.start <= inner.start && inner.end <= outer.end;
    return isWithin && meets(inner, outer);
}

/// The tracks of one recording on their way from one scan to the next.
class Replacement {
public:
    Replacement(Tracks const& tracks, FindingsOfMovie const& found)
        : tracks_(tracks)
        , found_(found)
        , ranges_(joinedRanges(found.outcome.ranges)) {
        for (auto const& track : tracks) {
            bool const isOfMovie = isFinding(track) && track.asset == found.asset && !track.keyframes.empty();
            (isOfMovie ? before_ : after_).push_back(track);
        }
    }

    Tracks run() {
        for (auto const& finding : found_.outcome.findings)
            if (!finding.keyframes.empty()) add(trackOf(finding, found_));
        for (auto& track : made_) name(track);
        for (auto const& track : before_) keep(track);
        after_.insert(after_.end(), made_.begin(), made_.end());
        return std::move(after_);
    }

private:
    /// What somebody accepted is covered as they have it, and only there where they trimmed it.
    void add(RedactionTrack track) {
        track.isEnabled = !isRejected(track);
        std::vector<TimeRange> accepted;
        for (auto const& each : before_) {
            if (stateOf(each) != FindingState::accepted || !hidesTheSame(each, track)) continue;
            auto const whole = untrimmed(each);
            if (meets(whole, track)) accepted.push_back(spanOf(whole));
        }
        if (accepted.empty()) {
            made_.push_back(std::move(track));
            return;
        }
        for (auto const& piece : outside(spanOf(track), joinedRanges(std::move(accepted)))) {
            made_.push_back(part(track, piece));
            made_.back().id = UUID::random();
        }
    }

    /// Everywhere, or where some of it is hidden by the same user only at the places that were rejected.
    bool isRejected(RedactionTrack const& track) const {
        bool isAny = false, isAll = true;
        for (auto const& each : tracks_) {
            if (!hidesTheSame(each, track)) continue;
            isAny = isAny || !each.isEnabled;
            isAll = isAll && !each.isEnabled;
        }
        return isAny && (isAll || std::ranges::any_of(before_, [&](auto const& each) {
                             return !each.isEnabled && hidesTheSame(each, track) && meets(each, track);
                         }));
    }

    /// A finding that is found again is known by the name it had.
    void name(RedactionTrack& track) {
        auto const earlier = std::ranges::find_if(before_, [&](auto const& each) {
            return stateOf(each) != FindingState::accepted && hidesTheSame(each, track) && meets(each, track) &&
                   !names_.contains(each.id);
        });
        if (earlier != before_.end()) track.id = earlier->id;
        names_.insert(track.id);
    }

    void keep(RedactionTrack const& track) {
        bool const wasLookedAt = std::ranges::any_of(
            ranges_, [&](TimeRange const& range) { return range.start < track.end && track.start < range.end(); });
        bool const isSought = track.kind != SensitiveKind::custom && found_.kinds.contains(track.kind);
        bool const staysUnlessFound = !track.isEnabled || !isSought;
        if (stateOf(track) == FindingState::accepted || !wasLookedAt || (staysUnlessFound && !isFoundAgain(track))) {
            after_.push_back(track);
            rename(after_.back());
            return;
        }
        for (auto const& range : outside(spanOf(track), ranges_)) keepPart(part(track, range));
    }

    bool isFoundAgain(RedactionTrack const& track) const {
        return std::ranges::any_of(made_,
                                   [&](auto const& each) { return hidesTheSame(each, track) && meets(each, track); });
    }

    void keepPart(RedactionTrack piece) {
        for (auto& track : made_) {
            if (isInside(piece, track)) return;
            if (goesOn(piece, track)) {
                track = joined(piece, std::move(track));
                return;
            }
            if (goesOn(track, piece)) {
                auto const id = track.id;
                track = joined(track, std::move(piece));
                track.id = id;
                return;
            }
        }
        rename(piece);
        after_.push_back(std::move(piece));
    }

    /// Where a new one has its name already.
    void rename(RedactionTrack& track) {
        if (!names_.insert(track.id).second) track.id = UUID::random();
    }

    Tracks const& tracks_;
    FindingsOfMovie const& found_;
    std::vector<TimeRange> ranges_; // that were looked at
    Tracks before_;                 // findings of the recording
    Tracks made_;
    Tracks after_;
    std::set<UUID> names_;
};

}

bool hidesTheSame(RedactionTrack const& a, RedactionTrack const& b) {
    return isFinding(a) && a.kind == b.kind && a.textHash == b.textHash;
}

Tracks withFindings(Tracks const& tracks, FindingsOfMovie const& found) { return Replacement(tracks, found).run(); }

}
