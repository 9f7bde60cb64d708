#include "../RandomEdits.h"

#include <Tavaro/Studio/Editor/PicturePlace.h>

#include <TavaroCore/Editing/ClipEdits.h>
#include <TavaroCore/Editing/RangeEdits.h>
#include <TavaroCore/Editing/TimelineEdits.h>

#include <gtest/gtest.h>

#include <functional>

using namespace tavaro;

namespace {

DemoProject film() {
    DemoProject project;
    project.assetDurations = {{"screen.mp4", 20}};
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 10}};
    return project;
}

struct Case {
    char const* what;
    double before;
    std::function<void(DemoProject&)> change;
    double after;
};

}

TEST(PicturePlace, aPlayheadStaysOnItsPicture) {
    Case const cases[] = {
        {"a cut before it", 6, [](DemoProject& p) { removeTimeRange(p, 1, 2); }, 4},
        {"a cut behind it", 6, [](DemoProject& p) { removeTimeRange(p, 7, 2); }, 6},
        {"a cut around it", 6, [](DemoProject& p) { removeTimeRange(p, 5, 3); }, 5},
        {"a split before it", 6, [](DemoProject& p) { splitClip(p, 3); }, 6},
        {"a split at it", 6, [](DemoProject& p) { splitClip(p, 6); }, 6},
        {"its clip shown once more", 6, [](DemoProject& p) { duplicateClip(p, p.timeline.clips[0].id); }, 6},
        {"twice as fast", 6,
         [](DemoProject& p) {
             changeSpeed(p, {0, 10}, 2);
         },
         3},
        {"time inserted before it", 6, [](DemoProject& p) { insertTime(p, 2, 1.5); }, 7.5},
        {"the end, cut off", 10,
         [](DemoProject& p) {
             keepTimeRange(p, {0, 8});
         },
         8},
        {"all other pictures", 6, [](DemoProject& p) { p.timeline.clips[0].asset = "other.mp4"; }, 6},
        {"nothing left", 6, [](DemoProject& p) { p.timeline.clips.clear(); }, 0},
    };
    for (auto const& each : cases) {
        auto project = film();
        auto const place = placeAt(project.timeline, each.before);
        each.change(project);
        EXPECT_NEAR(timeOf(project.timeline, place), each.after, 1e-9) << each.what;
    }
}

TEST(PicturePlace, inAHeldFrameItStaysAsFarInside) {
    auto project = film();
    insertTime(project, 2, 3);
    auto const place = placeAt(project.timeline, 4);
    removeTimeRange(project, 0, 1);
    EXPECT_NEAR(timeOf(project.timeline, place), 3, 1e-9);
}

TEST(PicturePlace, anUnchangedFilmKeepsEveryTime) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        RandomDocument random(seed);
        auto const project = random.make();
        for (int i = 0; i < 50; ++i) {
            auto const time = random.time(0, project.duration());
            EXPECT_NEAR(timeOf(project.timeline, placeAt(project.timeline, time)), time, 1e-9) << seed;
        }
    }
}
