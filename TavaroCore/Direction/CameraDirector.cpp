#include <TavaroCore/Direction/CameraDirector.h>

#include <TavaroCore/Direction/Private/Beats.h>
#include <TavaroCore/Direction/Private/ScreenActivity.h>
#include <TavaroCore/Project/DemoProject.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

namespace {

/// How a style shows each beat, in the order of `BeatKind`, and how calmly.
struct Direction {
    std::array<SceneLayout, 5> scenes;
    double shortestShot;  // seconds that a scene stays at least
    double shortestPlace; // seconds that the bubble stays in a corner at least
};

Direction const& directionOf(CameraDirectorStyle style) {
    using enum SceneLayout;
    //                                   intro       explaining  doing    result      outro
    static constexpr Direction calm{{split, overlay, overlay, overlay, split}, 4, 12};
    static constexpr Direction dynamic{{cameraOnly, split, overlay, screenOnly, cameraOnly}, 2, 6};
    static constexpr Direction presenter{{cameraOnly, cameraOnly, overlay, overlay, cameraOnly}, 3, 9};
    switch (style) {
    case CameraDirectorStyle::dynamic: return dynamic;
    case CameraDirectorStyle::presenter: return presenter;
    default: return calm;
    }
}

std::string_view reason(BeatKind beat) {
    constexpr std::array<std::string_view, 5> reasons{
        "The introduction, before anything happens on the screen",
        "Explaining while nothing happens on the screen",
        "The pointer and the keyboard are at work",
        "The screen shows a result",
        "The closing words",
    };
    return reasons[static_cast<std::size_t>(beat)];
}

struct Shot {
    SceneLayout scene;
    BeatKind beat; // that it begins with
    TimeRange range;
};

void append(std::vector<Shot>& shots, Shot const& shot) {
    if (!shots.empty() && shots.back().scene == shot.scene) {
        shots.back().range = shots.back().range.unionWith(shot.range);
    } else {
        shots.push_back(shot);
    }
}

std::vector<Shot> shotsOf(std::vector<Beat> const& beats, Direction const& direction) {
    std::vector<Shot> shots;
    for (auto const& beat : beats) {
        append(shots, {direction.scenes[static_cast<std::size_t>(beat.kind)], beat.kind, beat.range});
    }
    return shots;
}

bool mustBeSeen(Shot const& shot) { return shot.beat == BeatKind::doing || shot.beat == BeatKind::result; }

/// Lets the shot at `index` take the time of its neighbour.
void takeNeighbour(std::vector<Shot>& shots, std::size_t index, std::size_t neighbour) {
    shots[index].range = shots[index].range.unionWith(shots[neighbour].range);
    shots.erase(shots.begin() + static_cast<std::ptrdiff_t>(neighbour));
}

/// Gives every shot its length: one of work takes time from the shot after it, or before it, any other that is too
/// short goes to its neighbour. Each round leaves fewer shots or fewer short ones.
std::vector<Shot> withoutFlicker(std::vector<Shot> shots, double shortest) {
    while (shots.size() > 1) {
        auto const found = std::find_if(shots.begin(), shots.end(),
                                        [&](Shot const& shot) { return shot.range.duration < shortest - 1e-9; });
        if (found == shots.end()) break;
        auto const index = static_cast<std::size_t>(found - shots.begin());
        bool const hasNext = index + 1 < shots.size();
        auto const neighbour = hasNext ? index + 1 : index - 1;
        double const missing = shortest - found->range.duration;
        auto& other = shots[neighbour];
        if (!mustBeSeen(*found)) {
            // Its time goes to a shot that shows the screen, if there is one beside it.
            bool const toPrevious = index > 0 && (!hasNext || mustBeSeen(shots[index - 1]) || !mustBeSeen(other));
            takeNeighbour(shots, toPrevious ? index - 1 : neighbour, index);
        } else if (other.range.duration - missing >= shortest && !mustBeSeen(other)) {
            if (hasNext) {
                other.range.start += missing;
            } else {
                found->range.start -= missing;
            }
            other.range.duration -= missing;
            found->range.duration += missing;
        } else {
            takeNeighbour(shots, index, neighbour);
        }
        std::vector<Shot> merged;
        for (auto const& shot : shots) append(merged, shot);
        shots = std::move(merged);
    }
    return shots;
}

/// Whether a time is at least `distance` away from everything made by hand.
template<class Item> bool isClear(std::vector<Item> const& handMade, double time, double distance) {
    return std::none_of(handMade.begin(), handMade.end(),
                        [&](Item const& item) { return std::abs(item.time - time) < distance; });
}

void layCues(DemoProject& project, std::vector<Shot> const& shots, double shortest) {
    auto const handMade = project.layoutCues;
    for (auto const& shot : shots) {
        if (!isClear(handMade, shot.range.start, shortest)) continue;
        project.layoutCues.push_back({.time = shot.range.start,
                                      .scene = shot.scene,
                                      .isAutomatic = true,
                                      .reason = std::string(reason(shot.beat))});
    }
    std::stable_sort(project.layoutCues.begin(), project.layoutCues.end(),
                     [](auto const& a, auto const& b) { return a.time < b.time; });
}

/// The corner that the bubble is in at a time, as an index; none where it is placed elsewhere.
std::optional<std::size_t> cornerAt(double time, CameraPlacement first, std::vector<CameraMove> const& moves) {
    auto placement = first;
    CameraMove const* last = nullptr;
    for (auto const& move : moves) {
        if (move.time <= time && (!last || move.time >= last->time)) last = &move;
    }
    if (last && last->position) return std::nullopt;
    if (last) placement = last->placement;
    auto const& corners = ScreenActivity::corners;
    auto const found = std::find(corners.begin(), corners.end(), placement);
    if (found == corners.end()) return std::nullopt;
    return static_cast<std::size_t>(found - corners.begin());
}

/// Moves the bubble, while it is shown, out of the way of the work of the coming seconds.
void layMoves(DemoProject& project, std::vector<Shot> const& shots, ScreenActivity const& activity, double shortest) {
    constexpr double inTheWay = 0.4; // a click, or some travel
    constexpr double quieter = 0.34; // of that: worth going to
    auto const handMade = project.cameraMoves;
    double lastMove = -shortest;
    for (auto const& shot : shots) {
        if (shot.scene != SceneLayout::overlay) continue;
        for (double time = std::max(shot.range.start, lastMove + shortest); time < shot.range.end(); time += shortest) {
            auto const corner = cornerAt(time, project.camera.placement, project.cameraMoves);
            if (!corner || !isClear(handMade, time, shortest)) continue;
            auto const amounts = activity.nearCorners({time, std::min(shortest, shot.range.end() - time)});
            auto const best =
                static_cast<std::size_t>(std::min_element(amounts.begin(), amounts.end()) - amounts.begin());
            if (amounts[*corner] < inTheWay || amounts[best] > quieter * amounts[*corner]) continue;
            project.cameraMoves.push_back(
                {.time = time, .placement = ScreenActivity::corners[best], .isAutomatic = true});
            lastMove = time;
        }
    }
    std::stable_sort(project.cameraMoves.begin(), project.cameraMoves.end(),
                     [](auto const& a, auto const& b) { return a.time < b.time; });
}

}

void clearCameraDirection(DemoProject& project) {
    std::erase_if(project.layoutCues, [](LayoutCue const& cue) { return cue.isAutomatic; });
    std::erase_if(project.cameraMoves, [](CameraMove const& move) { return move.isAutomatic; });
}

void directCamera(DemoProject& project, RecordingMetadata const& shownLog) {
    bool const hasCamera = project.cameraAsset && project.camera.isEnabled;
    if (project.cameraDirectorStyle == CameraDirectorStyle::off || !hasCamera) return;
    clearCameraDirection(project);
    auto const& direction = directionOf(project.cameraDirectorStyle);
    auto const shots = withoutFlicker(shotsOf(beats(project, shownLog), direction), direction.shortestShot);
    layCues(project, shots, direction.shortestShot);
    if (!project.camera.position) layMoves(project, shots, ScreenActivity(shownLog), direction.shortestPlace);
}

}
