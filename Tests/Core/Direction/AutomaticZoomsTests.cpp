#include <TavaroCore/Direction/SmartDirector.h>
#include <TavaroCore/Recording/RecordingMetadata.h>
#include <TavaroCore/Zoom/ZoomEvent.h>
#include <TavaroCore/Zoom/ZoomResolver.h>

#include <gtest/gtest.h>

#include <random>
#include <string>

using namespace tavaro;

namespace {

/// A click in a window that fills a tenth of the frame: important enough for a zoom in every mode but "plain".
ClickEvent click(double t, double x = 0.5, double y = 0.5) {
    return {.t = t, .position = {x, y}, .windowFrame = NormalizedRect{0, 0, 0.2, 0.5}};
}

std::vector<ZoomEvent> zoomsOf(std::vector<ClickEvent> clicks, double duration, DemoMode mode = DemoMode::website,
                               PolishOptions const& options = {}) {
    RecordingMetadata recording;
    recording.clicks = std::move(clicks);
    return SmartDirector(options, mode).zoomEvents(recording, duration);
}

double importanceOf(std::vector<ClickEvent> const& clicks, std::vector<double> const& typing = {}) {
    ZoomTuning const everything{1, 1, 0, 1e9, 1e9, 0, 0};
    auto const merged = SmartDirector::merge(clicks, everything);
    EXPECT_EQ(merged.size(), 1u);
    return SmartDirector::importance(merged.front(), typing);
}

ClickEvent plainClick(double x = 0.5, double y = 0.5) { return {.t = 1, .position = {x, y}}; }

}

TEST(AutomaticZooms, oneClickMakesOneZoomAroundIt) {
    auto const zooms = zoomsOf({click(5, 0.4, 0.6)}, 20);
    ASSERT_EQ(zooms.size(), 1u);
    auto const& zoom = zooms.front();
    EXPECT_DOUBLE_EQ(zoom.start, 4.55);
    EXPECT_DOUBLE_EQ(zoom.duration, 1.5 + 0.45 + 0.55);
    EXPECT_DOUBLE_EQ(zoom.rampIn, 0.7);
    EXPECT_DOUBLE_EQ(zoom.rampOut, 0.5);
    EXPECT_EQ(zoom.center, (UnitPoint2{0.4, 0.6}));
    EXPECT_NEAR(zoom.scale, 1.25 + 0.5 * (0.42 + 0.35 - 0.06), 1e-12);
    EXPECT_EQ(zoom.motionBlur, 0.65);
    EXPECT_TRUE(zoom.isAutomatic);
    EXPECT_FALSE(zoom.followsCursor);
    EXPECT_EQ(zoom.style, ZoomStyle::camera);
    EXPECT_EQ(zoom.loupeSize, 0.17);
    EXPECT_FALSE(zoom.note);
    EXPECT_NE(zoom.id, zoomsOf({click(5, 0.4, 0.6)}, 20).front().id);
}

TEST(AutomaticZooms, plainModeAndEmptyTakesHaveNone) {
    PolishOptions following;
    following.zoomFollowsCursor = true;
    auto big = click(5);
    big.isDrag = big.isDoubleClick = true;
    big.application = "Terminal";
    EXPECT_TRUE(zoomsOf({big, big, big}, 20, DemoMode::plain).empty());
    EXPECT_TRUE(zoomsOf({big, big, big}, 20, DemoMode::plain, following).empty());
    EXPECT_TRUE(zoomsOf({}, 20).empty());
    EXPECT_TRUE(zoomsOf({click(5)}, 0).empty());
    EXPECT_TRUE(zoomsOf({click(5)}, -3).empty());
}

TEST(AutomaticZooms, clicksJoinWhileTheyAreCloseInTimeAndPlace) {
    std::vector const clicks{click(1, 0.3, 0.3), click(3, 0.4, 0.3), click(4, 0.5, 0.36), // joined, window inclusive
                             click(6.5, 0.4, 0.32),                                       // too late
                             click(7, 0.8, 0.32)};                                        // too far
    auto const merged = SmartDirector::merge(clicks, zoomTuning(DemoMode::website));
    ASSERT_EQ(merged.size(), 3u);
    EXPECT_EQ(merged[0].clicks.size(), 3u);
    EXPECT_EQ(merged[0].start, 1);
    EXPECT_EQ(merged[0].end, 4);
    EXPECT_NEAR(merged[0].focus.distance({0.4, 0.32}), 0, 1e-12);
    EXPECT_EQ(merged[1].clicks.data(), &clicks[3]);
    EXPECT_EQ(merged[2].focus, clicks[4].position);

    auto const zooms = zoomsOf({clicks[2], clicks[0], clicks[1]}, 30); // in any order
    ASSERT_EQ(zooms.size(), 1u);
    EXPECT_EQ(zooms.front().note, "3 clicks");
    EXPECT_DOUBLE_EQ(zooms.front().start, 0.55);
    EXPECT_DOUBLE_EQ(zooms.front().duration, 1.5 + 3 + 1);
}

TEST(ClickImportance, smallTargetsWeighMore) {
    auto small = click(1);
    small.windowFrame = NormalizedRect{0, 0, 0.1, 0.1};
    auto whole = click(1);
    whole.windowFrame = NormalizedRect{0, 0, 1, 1};
    auto broken = click(1);
    broken.windowFrame = NormalizedRect{0, 0, -1, 0.5};
    EXPECT_NEAR(importanceOf({plainClick()}), 0.42, 1e-12);
    EXPECT_NEAR(importanceOf({small}), 0.77 - 0.006, 1e-12);
    EXPECT_NEAR(importanceOf({whole}), 0.77 - 0.48, 1e-12);
    EXPECT_NEAR(importanceOf({broken}), 0.42, 1e-12);
    EXPECT_NEAR(importanceOf({whole, small}), 0.77 - 0.006 + 0.06, 1e-12);
}

TEST(ClickImportance, activityAddsUpToOne) {
    auto drag = plainClick();
    drag.isDrag = true;
    auto twice = plainClick();
    twice.isDoubleClick = true;
    EXPECT_NEAR(importanceOf({drag}), 0.52, 1e-12);
    EXPECT_NEAR(importanceOf({twice}), 0.5, 1e-12);
    EXPECT_NEAR(importanceOf({plainClick(), plainClick(), plainClick()}), 0.54, 1e-12);
    EXPECT_NEAR(importanceOf(std::vector(9, plainClick())), 0.6, 1e-12) << "more clicks count up to 0.18";
    auto all = click(1);
    all.isDrag = all.isDoubleClick = true;
    all.application = "Alacritty";
    EXPECT_EQ(importanceOf(std::vector(9, all), {1.5}), 1);
}

TEST(ClickImportance, typingCountsFromTheClickToTwoAndAHalfSecondsAfter) {
    for (double t : {1.0, 2.0, 3.5}) EXPECT_NEAR(importanceOf({plainClick()}, {0.2, t, 90}), 0.58, 1e-12) << t;
    for (double t : {0.9, 3.6}) EXPECT_NEAR(importanceOf({plainClick()}, {0.2, t, 90}), 0.42, 1e-12) << t;

    RecordingMetadata recording; // a whole window in website mode is below the threshold without typing
    recording.clicks = {plainClick()};
    recording.clicks.front().windowFrame = NormalizedRect{0, 0, 1, 1};
    recording.keystrokes = {{.t = 2, .keys = {"⌘", "C"}, .isShortcut = true}};
    SmartDirector const director({}, DemoMode::website);
    EXPECT_TRUE(director.zoomEvents(recording, 10).empty());
    recording.keystrokes.push_back({.t = 1.5, .keys = {"a"}});
    EXPECT_EQ(director.zoomEvents(recording, 10).size(), 1u);
}

TEST(ClickImportance, applicationsAreToldByTheirNames) {
    auto const with = [](std::string const& name) {
        auto named = plainClick();
        named.application = name;
        return importanceOf({plainClick(), named}) - 0.48;
    };
    for (auto const* name : {"Terminal", "iTerm2", "GHOSTTY", "Warp", "gnome-terminal"}) {
        EXPECT_NEAR(with(name), 0.2, 1e-12) << name;
    }
    for (auto const* name : {"Xcode", "VSCode", "Code - OSS", "Sublime Text"}) EXPECT_NEAR(with(name), 0.14, 1e-12);
    EXPECT_NEAR(with("Figma"), 0.06, 1e-12);
    EXPECT_NEAR(with("Finder"), -0.05, 1e-12);
    EXPECT_NEAR(with("Mail"), 0, 1e-12);
}

TEST(ClickImportance, clicksNearTheEdgeWeighLess) {
    EXPECT_NEAR(importanceOf({plainClick(0.12, 0.5)}), 0.42, 1e-12);
    EXPECT_NEAR(importanceOf({plainClick(0.5, 0.9)}), 0.34, 1e-12);
    EXPECT_NEAR(importanceOf({plainClick(0.97, 0.5)}), 0.2, 1e-12);
    EXPECT_NEAR(importanceOf({plainClick(-0.2, 0.5)}), 0.2, 1e-12);
}

TEST(AutomaticZooms, aClickAtTheVeryEndMakesAShortZoomUpToTheEnd) {
    auto const zooms = zoomsOf({click(9.9)}, 10);
    ASSERT_EQ(zooms.size(), 1u);
    EXPECT_NEAR(zooms.front().duration, 0.8, 1e-12);
    EXPECT_DOUBLE_EQ(zooms.front().end(), 10);
    EXPECT_NEAR(zooms.front().rampIn, 0.36, 1e-12);

    auto const brief = zoomsOf({click(0.1)}, 0.5);
    ASSERT_EQ(brief.size(), 1u);
    EXPECT_EQ(brief.front().range(), (TimeRange{0, 0.5}));
    EXPECT_TRUE(zoomsOf({click(0.1)}, 0.25).empty()) << "nothing to zoom in a quarter of a second";
}

TEST(AutomaticZooms, clustersCloserThanTheGapMakeOneZoomWithTheLargerScale) {
    auto strong = click(6, 0.75, 0.5);
    strong.isDrag = true;
    auto const zooms = zoomsOf({click(3, 0.35, 0.5), strong}, 30); // apart in time; spans 2.55…5.05 and 5.55…8.05
    ASSERT_EQ(zooms.size(), 1u);
    auto const& zoom = zooms.front();
    double const scale = 1.25 + 0.5 * (0.71 + 0.1);
    EXPECT_NEAR(zoom.scale, scale, 1e-12);
    EXPECT_DOUBLE_EQ(zoom.start, 2.55);
    EXPECT_NEAR(zoom.end(), 8.05, 1e-12);
    EXPECT_NEAR(zoom.center.x, 0.55, 1e-12) << "halfway from 0.35 to 0.75";
    EXPECT_TRUE(zoom.followsCursor) << "the second cluster has a drag";
    EXPECT_FALSE(zoom.note);
    EXPECT_DOUBLE_EQ(zoom.rampIn, 0.7);

    EXPECT_EQ(zoomsOf({click(3, 0.35, 0.5), click(6.6, 0.75, 0.5)}, 30).size(), 2u) << "a gap of 1.1 s is enough";
}

TEST(AutomaticZooms, aCornerThatAStrongZoomCannotFrameMakesNone) {
    auto corner = click(5, 0.02, 0.03);
    corner.application = "Terminal"; // important in spite of the edge
    EXPECT_TRUE(zoomsOf({corner}, 20, DemoMode::terminal).empty());
    PolishOptions following;
    following.zoomFollowsCursor = true;
    auto const zooms = zoomsOf({corner}, 20, DemoMode::terminal, following);
    ASSERT_EQ(zooms.size(), 1u);
    EXPECT_TRUE(zooms.front().followsCursor);
    EXPECT_EQ(zooms.front().center, corner.position);
}

TEST(AutomaticZooms, followingThePointerIsEagerAndRestsLonger) {
    PolishOptions following;
    following.zoomFollowsCursor = true;
    auto whole = click(5);
    whole.windowFrame = NormalizedRect{0, 0, 1, 1}; // importance 0.29
    EXPECT_TRUE(zoomsOf({whole}, 20).empty());
    EXPECT_EQ(zoomsOf({whole}, 20, DemoMode::website, following).size(), 1u);
    std::vector const apart{click(3), click(7.4)}; // a gap of 1.9 s between the zooms
    EXPECT_EQ(zoomsOf(apart, 20).size(), 2u);
    EXPECT_EQ(zoomsOf(apart, 20, DemoMode::website, following).size(), 1u);
}

TEST(UnseenClicks, aZoomEndsJustBeforeAClickThatItWouldHide) {
    ZoomEvent const zoom{.start = 10, .duration = 8, .rampIn = 0.7, .rampOut = 0.5, .scale = 2};
    auto const cut = [&](std::vector<ClickEvent> const& clicks) {
        return SmartDirector::endingBeforeUnseenClicks({zoom}, clicks).front();
    };
    auto const shorter = cut({click(10.5, 0.6), click(12, 0.74), click(14, 0.2), click(15, 0.9)});
    EXPECT_NEAR(shorter.end(), 13.95, 1e-12);
    EXPECT_NEAR(shorter.rampOut, 0.35 * 3.95, 1e-12);
    EXPECT_EQ(shorter.rampIn, 0.7);
    EXPECT_NEAR(cut({click(13, 0.5, 0.8)}).end(), 12.95, 1e-12);

    EXPECT_EQ(cut({click(14, 0.75), click(15, 0.25)}), zoom) << "the window's edge is visible";
    EXPECT_EQ(cut({click(10, 0.9), click(18, 0.9), click(30, 0.9)}), zoom) << "not strictly inside";
    EXPECT_EQ(cut({click(11, 0.9), click(14, 0.9)}), zoom) << "too little would be left before the first";
}

TEST(HandMadeZooms, keepAutomaticOnesAway) {
    ZoomEvent const first{.start = 1, .duration = 2};
    ZoomEvent const second{.start = 5, .duration = 2};
    ZoomEvent const loupe{.start = 6.5, .duration = 9, .style = ZoomStyle::loupe};
    ZoomEvent const touching{.start = 3, .duration = 2};
    auto const kept = SmartDirector::clearOfHandMade({first, second}, std::vector{touching, loupe});
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_EQ(kept.front().start, 1);
    EXPECT_EQ(SmartDirector::clearOfHandMade({first, second}, {}).size(), 2u);
}

TEST(AutomaticZooms, neverOverlapAndStayInsideTheTake) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> unit(0, 1);
        double const duration = 1 + unit(random) * 60;
        std::vector<ClickEvent> clicks(random() % 60);
        for (auto& each : clicks) {
            each = click(unit(random) * duration, unit(random), unit(random));
            each.isDrag = random() % 5 == 0;
        }
        PolishOptions options;
        options.zoomFollowsCursor = random() % 2;
        for (auto const mode : allCases<DemoMode>()) {
            auto const zooms = zoomsOf(clicks, duration, mode, options);
            auto const& tuning = zoomTuning(mode);
            double previousEnd = -1e9;
            for (auto const& zoom : zooms) {
                EXPECT_GE(zoom.start, std::max(previousEnd, 0.0)) << "seed " << seed;
                EXPECT_LE(zoom.end(), duration + 1e-9) << "seed " << seed;
                EXPECT_TRUE(zoom.scale >= tuning.minimumScale && zoom.scale <= tuning.maximumScale) << "seed " << seed;
                EXPECT_LE(ZoomResolver::resolve(zooms, zoom.start + zoom.rampIn).scale, tuning.maximumScale + 1e-9);
                previousEnd = zoom.end();
            }
        }
    }
}
