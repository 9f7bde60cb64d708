#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSONError.h>

#include <gtest/gtest.h>

using namespace tavaro;

namespace {

std::string failureOf(std::string_view json) {
    try {
        decodeProject(json);
    } catch (JSONError const& error) {
        return error.what();
    }
    return "no failure";
}

}

TEST(DemoProject, anEmptyObjectIsANewProject) {
    auto const project = decodeProject("{}");
    EXPECT_EQ(project.name, "Untitled Demo");
    EXPECT_EQ(project.version, 1);
    EXPECT_TRUE(project.timeline.clips.empty());
    EXPECT_NE(project.id, decodeProject("{}").id);

    auto const text = encodeProject(project);
    for (auto const* absent : {"transcript", "voiceover", "redactionScan\"", "sourceCrop", "screenSceneChanges"}) {
        EXPECT_EQ(text.find(absent), std::string::npos) << absent;
    }
    EXPECT_EQ(encodeProject(decodeProject(text)), text);
}

TEST(DemoProject, keysAreSortedAtEveryLevel) {
    auto const text =
        encodeProject(decodeProject(R"({"zoomEvents":[{"scale":2}],"timeline":{"clips":[{"asset":"a.mov"}]}})"));
    EXPECT_LT(text.find("\"assetDurations\""), text.find("\"audioTracks\""));
    EXPECT_LT(text.find("\"version\""), text.find("\"zoomEvents\""));
    EXPECT_NE(text.find(R"("isAutomatic":false,"loupeSize":0.17,"motionBlur":0)"), std::string::npos);
}

TEST(DemoProject, aWrongTypeFailsWithItsPath) {
    EXPECT_EQ(failureOf(R"({"zoomEvents":[{},{"scale":"big"}]})"),
              "zoomEvents[1].scale: expected a number, found a string");
    EXPECT_EQ(failureOf(R"({"timeline":{"clips":[{"isMuted":3}]}})"),
              "timeline.clips[0].isMuted: expected true or false, found a number");
    EXPECT_EQ(failureOf(R"({"createdAt":"yesterday"})"), "createdAt: Unrecognised date 'yesterday'");
    EXPECT_EQ(failureOf(R"({"mode":"cinema"})"),
              "mode: 'cinema' is not one of website, desktopApp, mobileApp, dashboard, terminal, plain");
    EXPECT_EQ(failureOf(R"({"background":{}})"), "background: expected an object with one key, the name of the case");
    EXPECT_EQ(failureOf(R"({"metadata":{"clicks":[{"position":{"x":[]}}]}})"),
              "metadata.clicks[0].position.x: expected a number, found an array");
    EXPECT_EQ(failureOf("[]"), "expected an object, found an array");
    EXPECT_NE(failureOf("{").find("not valid JSON"), std::string::npos);
    EXPECT_NE(failureOf("{} {}"), "no failure");
}

TEST(DemoProject, unknownKeysAndNullsAreSkipped) {
    auto const project = decodeProject(R"({"future":{"a":[1,{"b":2}]},"name":null,"canvas":{"width":640,"depth":[]}})");
    EXPECT_EQ(project.name, "Untitled Demo");
    EXPECT_EQ(project.canvas.width, 640);
    EXPECT_EQ(project.canvas.height, 1080);
}

TEST(DemoProject, casesWithContentReadInBothForms) {
    auto const project = decodeProject(
        R"({"background":"none","overlays":[{"kind":{"callout":{"text":"Look"}}},{"kind":"keycap"}],"layout":{"split":{"cameraFraction":0.3}}})");
    EXPECT_TRUE(project.background.isNone());
    EXPECT_EQ(std::get<OverlayKind::Callout>(project.overlays[0].kind.content).text, "Look");
    EXPECT_TRUE(std::holds_alternative<OverlayKind::Keycap>(project.overlays[1].kind.content));
    EXPECT_TRUE(project.layout.isSplit());
    EXPECT_NE(encodeProject(project).find(R"("background":{"none":{}})"), std::string::npos);
}

TEST(DemoProject, aCopySharesItsLogUntilOneIsEdited) {
    DemoProject first;
    first.metadata.edit().clicks.push_back({.t = 1});
    auto second = first;
    EXPECT_TRUE(first.metadata.sharesWith(second.metadata));
    EXPECT_EQ(first, second);
    EXPECT_EQ(hashOf(first), hashOf(second));
    second.metadata.edit().clicks[0].t = 2;
    EXPECT_EQ(first.metadata->clicks[0].t, 1);
    EXPECT_NE(first, second);
    EXPECT_NE(hashOf(first), hashOf(second));
}

TEST(DemoProject, cursorSettingsComeIntoRangeOnReading) {
    auto const cursor = decodeProject(R"({"cursor":{"smoothing":7,"motionBlur":-1,"size":9}})").cursor;
    EXPECT_EQ(cursor.smoothing, 1);
    EXPECT_EQ(cursor.motionBlur, 0);
    EXPECT_EQ(cursor.size, 9);
    EXPECT_EQ(cursor.clickDuration, 0.55);
}

TEST(DemoProject, mutedClipsThatFollowEachOtherAreOneRange) {
    DemoProject project;
    project.timeline.clips = {{.start = 0, .duration = 1, .isMuted = true},
                              {.start = 1 + 1e-9, .duration = 2, .isMuted = true},
                              {.start = 3, .duration = 1},
                              {.start = 4, .duration = 0, .isMuted = true},
                              {.start = 5, .duration = 1, .isMuted = true}};
    auto const muted = project.mutedRanges();
    ASSERT_EQ(muted.size(), 2u);
    EXPECT_NEAR(muted[0].end(), 3, 1e-8);
    EXPECT_EQ(muted[1], (TimeRange{5, 1}));
}

TEST(DemoProject, withoutACameraNoSceneShowsOne) {
    DemoProject project;
    project.layout.content = CanvasLayout::Split{};
    project.layoutCues = {{.time = 1, .scene = SceneLayout::split}};
    EXPECT_EQ(project.baseScene(), SceneLayout::screenOnly);
    EXPECT_FALSE(project.usesSplit());
    project.cameraAsset = "camera.mp4";
    EXPECT_EQ(project.baseScene(), SceneLayout::split);
    project.layout = {};
    EXPECT_EQ(project.baseScene(), SceneLayout::overlay);
    EXPECT_TRUE(project.usesSplit()) << "from its first cue on";
    project.camera.isEnabled = false;
    EXPECT_EQ(project.baseScene(), SceneLayout::screenOnly);
}
