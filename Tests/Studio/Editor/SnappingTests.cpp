#include <Tavaro/Studio/Editor/Snapping.h>

#include <TavaroCore/Project/DemoProject.h>

#include <gtest/gtest.h>

using namespace tavaro;

namespace {

/// Clips 0–4 and 4–10, a zoom 5–6, a caption 6–7, a scene at 8; the playhead at 2.
DemoProject film() {
    DemoProject project;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 4},
                              {.asset = "screen.mp4", .start = 4, .duration = 6}};
    project.zoomEvents = {{.start = 5, .duration = 1}};
    project.captions.cues = {{.start = 6, .duration = 1}};
    project.layoutCues = {{.time = 8}};
    return project;
}

struct Case {
    char const* what;
    std::vector<double> edges;
    double radius = 0.1;
    double to = 0; // of the first edge
    SnapKind kind = SnapKind::frame;
};

}

TEST(Snapping, theNearestTargetOfAnyEdgeCatches) {
    auto const project = film();
    SnapTargets const targets(project, 2);
    Case const cases[] = {
        {"the playhead", {2.05}, 0.1, 2, SnapKind::playhead},
        {"an edge between clips", {3.92}, 0.1, 4, SnapKind::clipEdge},
        {"the start", {0.03}, 0.1, 0, SnapKind::clipEdge},
        {"the end", {10.06}, 0.1, 10, SnapKind::clipEdge},
        {"a zoom", {4.95}, 0.1, 5, SnapKind::itemEdge},
        {"of two at one time, the caption", {6.01}, 0.1, 6, SnapKind::captionEdge},
        {"a point in time", {7.95}, 0.1, 8, SnapKind::itemEdge},
        {"the later edge, which is nearer", {4.08, 6.98}, 0.1, 4.1, SnapKind::captionEdge},
        {"nothing near: a whole frame", {8.51}, 0.1, 8.5, SnapKind::frame},
        {"nothing within the radius", {5.2}, 0.1, 5.2, SnapKind::frame},
        {"a wide radius", {5.2}, 0.3, 5, SnapKind::itemEdge},
        {"no radius", {2}, 0, 2, SnapKind::playhead},
    };
    for (auto const& each : cases) {
        auto const snap = targets.snap(each.edges, each.radius, 10);
        EXPECT_NEAR(each.edges[0] + snap.by, each.to, 1e-9) << each.what;
        EXPECT_EQ(snap.target.kind, each.kind) << each.what;
    }
}

TEST(Snapping, whatIsDraggedDoesNotCatchItself) {
    auto const project = film();
    std::vector<UUID> const dragged{project.zoomEvents[0].id};
    SnapTargets const targets(project, 2, dragged);
    EXPECT_EQ(targets.nearest(5, 0.1), nullptr);
    EXPECT_NE(SnapTargets(project, 2).nearest(5, 0.1), nullptr);
}

TEST(Snapping, theRadiusIsInPixelsOfTheView) {
    EXPECT_DOUBLE_EQ(snapRadius(8, 80), 0.1);
    EXPECT_EQ(snapRadius(8, 0), 0);
}
