#include "../../Core/Package/TemporaryFolder.h"
#include "../../Core/Records/MergePatch.h"
#include "../../Core/Records/RandomRecord.h"

#include <Tavaro/Model/Operations/Perform.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Style/BackgroundPreset.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <fstream>

using namespace tavaro;
using ::testing::StartsWith;

namespace {

/// Brings every number of a random record into the limits that all have in common.
struct Taming {
    template<class T> static void tame(T& value) {
        if constexpr (std::is_floating_point_v<T>)
            value = static_cast<T>(0.25 + std::abs(std::remainder(value, 1.0)));
        else if constexpr (std::is_integral_v<T> && !std::is_same_v<T, bool>)
            value = static_cast<T>(16 + static_cast<std::uint64_t>(value) % 200);
        else if constexpr (RecordType<T>)
            forEachField<T>([&](auto const& field) { tame(value.*field.member); });
        else if constexpr (CaseType<T>)
            std::visit([](auto& content) { tame(content); }, value.content);
    }
    template<class T> static void tame(std::optional<T>& value) {
        if (value) tame(*value);
    }
    template<class T> static void tame(CopyOnWrite<T>& value) { tame(value.edit()); }
    template<class T> static void tame(std::vector<T>& values) {
        for (auto& value : values) tame(value);
    }
};

DemoProject randomProject(unsigned seed) {
    DemoProject project;
    RandomRecord(seed).fill(project);
    Taming::tame(project);
    std::ranges::replace_if(
        project.name, [](unsigned char c) { return c < 0x20 || c == 0x7F; }, '-');
    return project;
}

JSONValue treeOf(DemoProject const& project) { return JSONValue::parse(encodeProject(project)); }

std::string patched(DemoProject& project, std::string const& patch) {
    auto const before = project;
    try {
        return perform(project, operations::Patch{JSONValue::parse(patch)}).summary;
    } catch (OperationError const& error) {
        EXPECT_EQ(project, before) << patch;
        return error.what();
    }
}
std::string refusal(std::string const& patch) {
    DemoProject project;
    project.zoomEvents = {{.start = 1, .duration = 2}};
    return patched(project, patch);
}

std::string afterSetting(DemoProject& project, std::vector<std::string> changes) {
    try {
        return perform(project, operations::SetFields{std::move(changes)}).summary;
    } catch (OperationError const& error) {
        return error.what();
    }
}

constexpr bool isProtected(std::string_view name) {
    for (std::string_view const each :
         {"id", "version", "metadata", "assetDurations", "createdAt", "modifiedAt", "timeline"}) {
        if (each == name) return true;
    }
    return false;
}

}

TEST(Patch, everyFieldThatIsNotProtectedTakesTheValueOfAnotherDocument) {
    for (unsigned seed = 0; seed < 30; ++seed) {
        auto const from = randomProject(seed), to = randomProject(seed + 500);
        auto const patch = difference(treeOf(from), treeOf(to));
        forEachField<DemoProject>([&](auto const& field) {
            auto const& fields = std::get<JSONValue::Object>(patch.content);
            auto const change = fields.find(field.name);
            if (change == fields.end() || isProtected(field.name)) return;
            auto project = from;
            auto const text = encodeJSON(JSONValue{JSONValue::Object{{std::string(field.name), change->second}}});
            auto const summary = patched(project, text);
            EXPECT_EQ(summary, "Changed " + std::string(field.name)) << text;
            EXPECT_EQ(project.*field.member, to.*field.member) << field.name;
            EXPECT_TRUE(project.metadata.sharesWith(from.metadata));
        });
    }
}

TEST(Patch, isRefusedWithTheReason) {
    for (auto const* patch : {"3", "[]", "null", "\"name\""})
        EXPECT_EQ(refusal(patch), "The patch must be a JSON object.") << patch;
    EXPECT_EQ(refusal(R"({"name":"New","nmae":"x"})"),
              "\"nmae\" is not a project field. Check get_project for the names.");
    forEachField<DemoProject>([&](auto const& field) {
        if (!isProtected(field.name)) return;
        auto const name = std::string(field.name);
        EXPECT_EQ(refusal(R"({")" + name + R"(":{}})"),
                  '"' + name + "\" can't be changed." + (name == "timeline" ? " Use edit_timeline." : ""));
    });
    EXPECT_EQ(refusal(R"({"camera":{"isEnabledd":true}})").substr(0, 44),
              "camera.isEnabledd: there is no such field; t");
    EXPECT_EQ(refusal(R"({"mode":"movie"})").substr(0, 32), "mode: 'movie' is not one of webs");
    EXPECT_EQ(refusal(R"({"canvas":{"width":0}})"), "canvas.width: expected a number from 16 to 16384, found 0.");
    EXPECT_EQ(refusal(R"({"zoomEvents":[{"duration":-1}]})"),
              "zoomEvents[0].duration: expected a number from 0 to 10000000, found -1.");
    EXPECT_EQ(refusal(R"({"overlays":[{"kind":{"box":{"rect":{"x":1e300}}}}]})"),
              "overlays[0].kind.box.rect.x: expected a number from -1000000000 to 1000000000, found 1e+300.");
    EXPECT_EQ(refusal(R"({"cursor":{"smoothing":5}})"), "cursor.smoothing: expected a number from 0 to 1, found 5.");
    EXPECT_EQ(refusal(R"({"export":{"fps":0}})"), "export.fps: expected a number from 1 to 240, found 0.");
    EXPECT_EQ(refusal(R"({"background":{"solid":{"colour":{"r":255}}}})"),
              "background.solid.colour.r: expected a number from 0 to 1, found 255.");
    EXPECT_THAT(refusal(R"({"background":{"preset":"no"}})"), StartsWith("background.preset: expected one of "));
}

TEST(Patch, aBadValueThatWasThereBeforeDoesNotStopAnother) {
    DemoProject project;
    project.zoomEvents = {{.start = 1, .duration = -2}, {.start = 3, .duration = 1}};
    EXPECT_EQ(afterSetting(project, {"zoomEvents.1.scale=3"}), "Changed zoomEvents");
    EXPECT_EQ(project.zoomEvents[1].scale, 3);
    EXPECT_EQ(afterSetting(project, {"zoomEvents.1.duration=-3"}),
              "zoomEvents[1].duration: expected a number from 0 to 10000000, found -3.");
}

TEST(Patch, aNameIsALineThatCanBeShown) {
    std::string longest;
    while (longest.size() < 2000) longest += "ü";
    DemoProject project;
    EXPECT_EQ(afterSetting(project, {"name=" + longest}), "Changed name");
    EXPECT_EQ(afterSetting(project, {"name=" + longest + "ü"}), "name: expected at most 1000 characters, found 1001.");
    EXPECT_EQ(refusal(R"({"name":"one\ntwo"})"), "name: expected no line breaks or control characters.");
    EXPECT_EQ(project.name, longest);
}

TEST(Patch, mediaFilesThatItNamesAreInThePackage) {
    TemporaryFolder const folder;
    ProjectPackage const package(folder / "take.recproj");
    package.createDirectories();
    std::ofstream(package.assetURL("here.mov")) << "bytes";
    DemoProject project;
    auto const after = [&](std::string const& patch) {
        try {
            return perform(project, operations::Patch{JSONValue::parse(patch)}, package).summary;
        } catch (OperationError const& error) {
            return std::string(error.what());
        }
    };
    auto const before = project;
    EXPECT_EQ(after(R"({"cameraAsset":"gone.mov"})"), "cameraAsset: the project has no media file “gone.mov”.");
    EXPECT_EQ(after(R"({"cameraAsset":""})"), "cameraAsset: the project has no media file “”.");
    EXPECT_EQ(after(R"({"camera":{"lutAsset":"gone.cube"}})"),
              "camera.lutAsset: the project has no media file “gone.cube”.");
    EXPECT_EQ(after(R"({"background":{"image":{"assetName":"gone.png"}}})"),
              "background.image.assetName: the project has no media file “gone.png”.");
    EXPECT_EQ(after(R"({"audioTracks":[{"clips":[{"asset":"here.mov"},{"asset":"gone.wav"}]}]})"),
              "audioTracks[0].clips[1].asset: the project has no media file “gone.wav”.");
    EXPECT_EQ(after(R"({"voiceover":{"segments":[{"audioAsset":"gone.wav"}]}})"),
              "voiceover.segments[0].audioAsset: the project has no media file “gone.wav”.");
    EXPECT_EQ(project, before);
    EXPECT_EQ(after(R"({"cameraAsset":"here.mov"})"), "Changed cameraAsset");
    project.cameraAsset = "lost.mov";
    EXPECT_EQ(after(R"({"name":"Tour","cameraAsset":"lost.mov"})"), "Changed name");
}

TEST(Patch, itemsOfAListKeepIdentitiesOfTheirOwn) {
    auto const id = UUID::random(), other = UUID::random();
    auto const item = [](UUID const& id) { return R"({"id":")" + id.text() + R"("})"; };
    for (std::string const list : {"zoomEvents", "overlays", "audioTracks", "silences", "layoutCues"}) {
        auto const patch = [&](std::string const& items) { return R"({")" + list + R"(":[)" + items + "]}"; };
        EXPECT_EQ(refusal(patch(item(id) + "," + item(other) + "," + item(id))),
                  list + "[2].id: " + list + "[0] has the same, " + id.text() + ".");
        EXPECT_EQ(refusal(patch(item(id) + "," + item(other))), "Changed " + list);
    }
    EXPECT_EQ(refusal(R"({"audioTracks":[{"clips":[)" + item(id) + "," + item(id) + "]}]}"),
              "audioTracks[0].clips[1].id: audioTracks[0].clips[0] has the same, " + id.text() + ".");
    DemoProject project;
    project.zoomEvents.resize(2);
    project.zoomEvents[0].id = project.zoomEvents[1].id = id;
    EXPECT_EQ(afterSetting(project, {"zoomEvents.0.scale=3"}), "Changed zoomEvents") << "it was so before";
}

TEST(SetFields, takesPathsWithJSONOrText) {
    DemoProject project;
    project.zoomEvents.resize(2);
    EXPECT_EQ(afterSetting(project, {"background.preset=midnight", "camera.isEnabled=false", "zoomEvents.1.scale=2",
                                     "zoomEvents.1.note=2 times", "intro.text=Hello there", "canvas={\"width\":1280}",
                                     "captions.font=mono", "name=a=b"}),
              "Changed name, canvas, intro, background, camera, zoomEvents, captions");
    EXPECT_EQ(project.background, BackgroundPreset::withID("midnight")->style);
    EXPECT_FALSE(project.camera.isEnabled);
    EXPECT_EQ(project.zoomEvents[1].scale, 2);
    EXPECT_EQ(project.zoomEvents[1].note, "2 times");
    EXPECT_EQ(project.intro->text, "Hello there");
    EXPECT_EQ(project.canvas, (Size2{1280, 1080}));
    EXPECT_EQ(project.captions.font, CaptionFont::mono);
    EXPECT_EQ(project.name, "a=b");

    EXPECT_EQ(afterSetting(project, {"zoomEvents.0=null", "intro=null", "camera.isEnabled=null", "name="}),
              "Changed name, intro, camera, zoomEvents");
    EXPECT_EQ(project.zoomEvents.size(), 1u);
    EXPECT_FALSE(project.intro);
    EXPECT_TRUE(project.camera.isEnabled);
    EXPECT_EQ(project.name, "");
    EXPECT_EQ(afterSetting(project, {"name="}), "The project is that way already");

    EXPECT_EQ(afterSetting(project, {"name=1.50", "zoomEvents.0.note=true"}), "Changed name, zoomEvents");
    EXPECT_EQ(project.name, "1.50");
    EXPECT_EQ(project.zoomEvents[0].note, "true");
}

TEST(SetFields, changesAllOrNothing) {
    DemoProject project;
    auto const before = project;
    EXPECT_EQ(afterSetting(project, {"name=New", "camera.size=big"}),
              "camera.size: expected a number, found a string.");
    EXPECT_EQ(afterSetting(project, {"zoomEvents.0.scale=2"}),
              "zoomEvents.0: there is no such item; the list is empty.");
    EXPECT_EQ(afterSetting(project, {"camera.size=-1"}), "camera.size: expected a number from 0 to 1000000, found -1.");
    EXPECT_EQ(afterSetting(project, {"name.first=x"}), "name: expected a string, found an object.");
    EXPECT_EQ(afterSetting(project, {std::string(100000, '.') + "=1"}), "The path of a field has fewer dots.");
    EXPECT_EQ(afterSetting(project, {"timeline.clips=[]"}), "\"timeline\" can't be changed. Use edit_timeline.");
    EXPECT_EQ(project, before);
}
