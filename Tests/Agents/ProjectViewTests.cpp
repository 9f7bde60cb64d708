#include "../Core/Records/RandomRecord.h"
#include "Refusal.h"

#include <Tavaro/Agents/Private/ProjectView.h>

#include <TavaroCore/Project/DemoProject.h>

#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::HasSubstr;

namespace {

JSONValue::Object& part(JSONValue::Object& json, char const* name) {
    return std::get<JSONValue::Object>(json.at(name).content);
}

JSONValue::Object membersOf(ProjectView const& view) { return std::get<JSONValue::Object>(view.json.value().content); }

std::size_t sizeOf(ProjectView const& view) { return view.json.text().size(); }

DemoProject clicked(std::size_t clicks, std::size_t keystrokes) {
    DemoProject project;
    project.metadata.edit().clicks.resize(clicks);
    project.metadata.edit().keystrokes.resize(keystrokes, {.keys = {"⌘", "S"}});
    project.metadata.edit().cursorSamples.resize(1000);
    return project;
}

}

TEST(ProjectView, isTheDocumentWithoutWhatAgentsHaveNoUseFor) {
    for (unsigned seed = 0; seed < 40; ++seed) {
        DemoProject project;
        RandomRecord(seed).fill(project);
        auto expected = std::get<JSONValue::Object>(JSONValue::parse(encodeProject(project)).content);
        expected.erase("cameraFaces");
        for (auto const* const key : {"cursorSamples", "rawCursorSamples", "micLevels"})
            part(expected, "metadata").erase(key);
        if (expected.contains("transcript")) part(expected, "transcript").erase("envelope");
        expected.emplace("duration", project.duration());
        auto const view = viewOf(project);
        EXPECT_EQ(view.json.value(), JSONValue(expected)) << seed;
        EXPECT_EQ(view.leftOut(), "") << seed;
    }
}

TEST(ProjectView, showsTheFirst500EventsOfEachKindAndSaysHowManyThereAre) {
    auto project = clicked(501, 500);
    auto const view = viewOf(project);
    auto json = membersOf(view);
    auto const& clicks = std::get<JSONValue::Array>(part(json, "metadata").at("clicks").content);
    ASSERT_EQ(clicks.size(), 500u);
    EXPECT_EQ(*clicks[499].find<std::string>("id"), project.metadata->clicks[499].id.text());
    EXPECT_EQ(view.leftOut(), " metadata.clicks: the first 500 of 501; 1 are left out.");
}

TEST(ProjectView, neverPassesItsLimitAndShortensEventsBeforeAnythingElse) {
    auto project = clicked(800, 300);
    project.overlays.resize(20);
    auto const whole = sizeOf(viewOf(project));
    auto const withoutEvents = sizeOf(viewOf(project, {.events = 0}));
    for (std::size_t bytes : {whole, whole - 1, (whole + withoutEvents) / 2, withoutEvents, withoutEvents - 1}) {
        auto const view = viewOf(project, {.bytes = bytes});
        EXPECT_LE(sizeOf(view), bytes);
        bool const showsOverlays = membersOf(view).at("overlays").as<JSONValue::Array>()->size() == 20;
        EXPECT_EQ(showsOverlays, bytes >= withoutEvents) << bytes;
        EXPECT_EQ(view.leftOut().find("do not patch") == std::string::npos, showsOverlays) << bytes;
        EXPECT_THAT(view.leftOut(), HasSubstr("of 800"));
    }
    project.name = std::string(100'000, 'x');
    EXPECT_EQ(refusal([&] { viewOf(project, {.bytes = 50'000}); }),
              "failed: The project has too much text to be shown.");
}
