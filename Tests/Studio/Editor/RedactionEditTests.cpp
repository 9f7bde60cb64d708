#include "TestEditor.h"

#include <Tavaro/Studio/Editor/RedactionEdits.h>

#include <TavaroCore/Timeline/RecordingOnTimeline.h>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <random>

using namespace tavaro;
using ::testing::DoubleNear;

namespace {

NormalizedRect at(double x) { return {x, 0.5, 0.1, 0.1}; }

RedactionTrack hidden(double start, double end, std::vector<RedactionKeyframe> keyframes) {
    return {.label = "a•••",
            .textHash = "1",
            .start = start,
            .end = end,
            .keyframes = std::move(keyframes),
            .isAutomatic = true};
}

/// Clips 0–10 and 10–20 of one recording, from its seconds 0 and 30; the second at double speed.
DemoProject filmWith(RedactionTrack track) {
    DemoProject project;
    project.assetDurations["a.mp4"] = 60;
    project.timeline.clips = {{.asset = "a.mp4", .duration = 10},
                              {.asset = "a.mp4", .start = 10, .sourceStart = 30, .duration = 10, .speed = 2}};
    project.redactions = std::vector{std::move(track)};
    return project;
}

/// What the recording hides: "2–6 (2, 4)", with the times of the keyframes; "*" where it is a scan's.
std::string hiding(DemoProject const& project) {
    std::string text;
    for (auto const& track : *project.redactions) {
        text += fmt::format("{}{:g}–{:g} (", text.empty() ? "" : " ", track.start, track.end);
        for (auto const& each : track.keyframes) text += fmt::format("{}{:g}", text.back() == '(' ? "" : ", ", each.t);
        text += track.isAutomatic ? ")*" : ")";
    }
    return text;
}

struct Trim {
    ClipEdge edge;
    double to;
    double at;
};
std::string trimmed(DemoProject project, Trim const& trim) {
    trimRedaction(project, project.redactions->front().id, trim.edge, trim.to, trim.at);
    return hiding(project);
}

std::string moved(DemoProject project, double by, double at) {
    moveRedaction(project, project.redactions->front().id, by, at);
    return hiding(project);
}

}

TEST(RedactionEdits, aMoveTakesAllKeyframesAndGoesByTheRecordingsTime) {
    auto const project = filmWith(hidden(2, 6, {{2, at(0.1)}, {4, at(0.3)}}));
    EXPECT_EQ(moved(project, 1.5, 4), "3.5–7.5 (3.5, 5.5)");
    EXPECT_EQ(moved(project, -5, 4), "0–4 (0, 2)") << "not before the recording";
    EXPECT_EQ(moved(project, 9, 4), "32–36 (32, 34)") << "into the clip behind the cut, which plays at double speed";
    EXPECT_EQ(moved(project, 0, 4), hiding(project)) << "what was not moved is the scan's";
    EXPECT_EQ(moved(filmWith(hidden(50, 58, {{50, at(0)}})), 3, 0), "50–58 (50)*") << "the film shows none of it";
    EXPECT_EQ(moved(filmWith(hidden(44, 58, {{44, at(0)}})), 2, 18), "46–60 (46)") << "nor behind the recording";
}

TEST(RedactionEdits, aTrimDropsWhatIsOutsideAndTheEdgeHoldsItsPlace) {
    auto const project = filmWith(hidden(2, 8, {{2, at(0.1)}, {4, at(0.3)}, {6, at(0.5)}}));
    auto area = project;
    area.redactions.edit().front().textHash.clear();
    EXPECT_EQ(trimmed(area, {ClipEdge::leading, 3, 5}), "3–8 (3, 4, 6)");
    EXPECT_EQ(trimmed(area, {ClipEdge::trailing, 5, 5}), "2–5 (2, 4, 5)");
    EXPECT_EQ(trimmed(area, {ClipEdge::leading, 7, 5}), "7–8 (7)");
    EXPECT_EQ(trimmed(area, {ClipEdge::leading, 1, 5}), "1–8 (2, 4, 6)") << "longer, it stays as it begins";
    EXPECT_EQ(trimmed(project, {ClipEdge::leading, 3, 5}), "3–8 (2, 4, 6)") << "of a finding it is known where it was";
    EXPECT_EQ(trimmed(project, {ClipEdge::trailing, 5, 5}), "2–5 (2, 4, 6)");
    EXPECT_EQ(trimmed(project, {ClipEdge::leading, 2, 5}), hiding(project));
    auto changed = project;
    auto const track = [&]() -> RedactionTrack const& { return changed.redactions->front(); };
    trimRedaction(changed, track().id, ClipEdge::leading, 3, 5);
    for (double const time : {3.0, 3.5, 5.0, 7.9})
        EXPECT_THAT(track().areaAt(time).x, DoubleNear(project.redactions->front().areaAt(time).x, 1e-12)) << time;
    trimRedaction(changed, track().id, ClipEdge::trailing, -5, 5);
    EXPECT_GT(track().duration(), 0.01) << "it stays long enough to be taken hold of";
    EXPECT_LT(track().duration(), 0.1);
}

TEST(RedactionEdits, anEdgeGoesOverACutAndNotOverWhereTheRecordingDoesNotGoOn) {
    auto project = filmWith(hidden(2, 8, {{2, at(0.1)}}));
    EXPECT_EQ(trimmed(project, {ClipEdge::trailing, 12, 5}), "2–34 (2)");
    EXPECT_EQ(trimmed(project, {ClipEdge::trailing, 10, 5}), "2–10 (2)") << "up to the cut is what is before it";
    EXPECT_EQ(trimmed(project, {ClipEdge::trailing, 99, 5}), "2–50 (2)");
    std::swap(project.timeline.clips[0].sourceStart, project.timeline.clips[1].sourceStart); // 30–40, then 0–20
    EXPECT_EQ(trimmed(project, {ClipEdge::leading, 5, 12}), "0–8 (2)") << "the clip before shows what comes later";
}

TEST(RedactionEdits, whatTheFilmShowsElsewhereStaysHiddenThere) {
    auto project = filmWith(hidden(2, 36, {{2, at(0.1)}, {36, at(0.4)}}));
    std::swap(project.timeline.clips[0].sourceStart, project.timeline.clips[1].sourceStart);
    // 30–40 at 0–10 of the film, 0–20 at 10–20
    EXPECT_EQ(trimmed(project, {ClipEdge::leading, 3, 2}), "33–36 (30, 36) 2–30 (2, 30)*");
    EXPECT_EQ(trimmed(project, {ClipEdge::trailing, 16, 15}), "2–12 (2, 20) 20–36 (20, 36)*");
    EXPECT_EQ(trimmed(project, {ClipEdge::leading, -3, 2}), hiding(project)) << "it is hidden before that already";
    auto shorter = project;
    shorter.timeline.clips.pop_back();
    EXPECT_EQ(trimmed(shorter, {ClipEdge::leading, 3, 2}), "33–36 (30, 36)") << "nobody sees what was before";
}

TEST(RedactionEdits, aTrimOfOnePlaceUncoversNothingElse) {
    std::mt19937 random(7);
    auto const chance = [&](double least, double most) {
        return std::uniform_real_distribution<double>(least, most)(random);
    };
    for (int round = 0; round < 300; ++round) {
        DemoProject project;
        project.assetDurations["a.mp4"] = 40;
        double end = 0;
        for (int i = 0; i < 4; ++i) {
            double const length = chance(1, 6);
            project.timeline.clips.push_back({.asset = "a.mp4",
                                              .start = end,
                                              .sourceStart = chance(0, 28),
                                              .duration = length,
                                              .speed = chance(0.5, 2)});
            end += length;
        }
        double const start = chance(0, 30);
        project.redactions = std::vector{hidden(start, start + chance(1, 9), {{start, at(0.1)}})};
        auto const covers = [&](DemoProject const& film, double time) {
            auto const source = *film.timeline.sourceTime(time);
            return std::ranges::any_of(*film.redactions, [&](RedactionTrack const& each) {
                return source >= each.start - 1e-3 && source <= each.end + 1e-3;
            });
        };
        double const held = chance(0, end), to = chance(0, end);
        auto const shown = shownSpan(project, project.redactions->front(), held);
        if (!shown) continue;
        auto changed = project;
        auto const edge = round % 2 ? ClipEdge::leading : ClipEdge::trailing;
        trimRedaction(changed, project.redactions->front().id, edge, to, held);
        for (double time = 0.005; time < end; time += 0.1) {
            bool const isHeld = time > shown->start - 0.01 && time < shown->end() + 0.01;
            auto const source = *project.timeline.sourceTime(time);
            double const first = project.timeline.sourceTime(shown->start + 1e-4).value(),
                         last = project.timeline.sourceTime(shown->end() - 1e-4).value();
            bool const isOfSame = source > first - 0.01 && source < last + 0.01; // shown twice
            if (!isHeld && !isOfSame && covers(project, time)) {
                EXPECT_TRUE(covers(changed, time)) << round << " at " << time;
            }
        }
    }
}

TEST(RedactionEdits, keysMoveAndTrimWhatIsSelectedAsNamedSteps) {
    auto film = shortFilm();
    film.redactions = std::vector{hidden(2, 4, {{2, at(0.1)}, {3, at(0.2)}})};
    TestEditor editor(film);
    auto const before = editor.document();
    EXPECT_FALSE(editor.isEnabled("moveLater"));
    auto const frame = 1 / editor.document().exportSettings.editingRate();
    editor->select(std::vector{film.redactions->front().id});
    auto const track = [&]() -> RedactionTrack const& { return editor.document().redactions->front(); };
    editor.run("moveLater");
    EXPECT_THAT(track().start, DoubleNear(2 + frame, 1e-9));
    EXPECT_THAT(track().keyframes.back().t, DoubleNear(3 + frame, 1e-9));
    EXPECT_FALSE(track().isAutomatic) << "the next scan leaves it as it is";
    EXPECT_EQ(editor->undoName(), "Move Redaction");
    editor.run("moveEarlier");
    editor->setPlayhead(3);
    editor.run("endHere");
    EXPECT_EQ(editor->undoName(), "Trim Redaction");
    EXPECT_THAT(track().end, DoubleNear(3, 1e-6));
    while (editor.project->undoName()) editor->undo();
    EXPECT_EQ(*editor.document().redactions, *before.redactions);
    editor->select(std::vector{film.timeline.clips[0].id});
    EXPECT_FALSE(editor.isEnabled("moveLater")) << "clips lie between others";
    editor->select(std::vector{film.zoomEvents[0].id});
    editor.run("moveLater");
    EXPECT_THAT(editor.document().zoomEvents[0].start, DoubleNear(1 + frame, 1e-9));
}
