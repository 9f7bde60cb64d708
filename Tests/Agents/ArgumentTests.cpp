#include "Refusal.h"

#include <Tavaro/Agents/Private/ExportArguments.h>
#include <Tavaro/Agents/Private/ExportPaths.h>
#include <Tavaro/Agents/Private/ProjectActions.h>
#include <Tavaro/Agents/Private/ProjectPatch.h>
#include <Tavaro/Agents/Private/RecordRequest.h>
#include <Tavaro/Agents/Private/TimelineOp.h>
#include <Tavaro/Model/Operations/Perform.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMCP/Catalogue/MCPToolCatalog.h>
#include <TavaroVoice/Voiceover/SpokenLines.h>

#include <gtest/gtest.h>

#include <cmath>

using namespace tavaro;

namespace {

/// Ten seconds of one clip with a microphone.
DemoProject film() {
    DemoProject project;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 10}};
    project.audioTracks = {{.role = AudioRole::microphone}};
    return project;
}

DemoProject spokenFilm(std::size_t words) {
    auto project = film();
    Transcript transcript;
    for (std::size_t i = 0; i < words; ++i) {
        auto const start = static_cast<double>(i);
        transcript.words.push_back({.text = i == 1 ? "um" : "word", .start = start + 0.2, .end = start + 0.6});
    }
    project.transcript = CopyOnWrite(transcript);
    return project;
}

template<class Read> std::string refused(std::string const& arguments, Read read) {
    return refusal([&] {
        auto const given = JSONValue::parse(arguments);
        read(ToolArguments(std::get<JSONValue::Object>(given.content)));
    });
}

std::string recordRefusal(std::string const& arguments, RecordingLength length = RecordingLength::open) {
    return refused(arguments, [&](ToolArguments const& given) { recordRequest(given, length); });
}
RecordRequest recording(std::string const& arguments) {
    auto const given = JSONValue::parse(arguments);
    return recordRequest(ToolArguments(std::get<JSONValue::Object>(given.content)), RecordingLength::open);
}
std::string opRefusal(std::string const& arguments) {
    return refused(arguments, [](ToolArguments const& given) { timelineOp(given, film()); });
}
std::string actionRefusal(std::string const& arguments, DemoProject const& project = spokenFilm(3)) {
    return refused(arguments, [&](ToolArguments const& given) { projectAction(given, project); });
}
std::string exportRefusal(std::string const& arguments) {
    return refused(arguments, [](ToolArguments const& given) { exportChoices(given); });
}

JSONValue const& properties(MCPToolName tool) {
    return *toolCatalog::named(nameOf(tool))->inputSchema.find("properties");
}

double boundOf(JSONValue const& value) {
    auto const* const whole = value.as<std::int64_t>();
    return whole ? static_cast<double>(*whole) : std::get<double>(value.content);
}

/// For each bounded argument of the tool: the ends are taken in either spelling, and what lies beyond is not. It comes
/// behind the others, and so counts where it is one of them.
void expectLimits(MCPToolName tool, std::string const& others, std::string (*refuse)(std::string const&)) {
    for (auto const& [name, schema] : *properties(tool).as<JSONValue::Object>()) {
        auto const* const least = schema.find("minimum");
        auto const* const most = schema.find("maximum");
        if (!least || !most) continue;
        auto const with = [&, &name = name](std::string const& value) {
            return refuse("{" + others + '"' + name + "\":" + value + "}");
        };
        auto const isOfTheArgument = [&, &name = name](std::string const& sentence) {
            return sentence.find(name + " must be ") != sentence.npos;
        };
        for (double const end : {boundOf(*least), boundOf(*most)}) {
            EXPECT_FALSE(isOfTheArgument(with(std::to_string(end)))) << name << " " << end;
            if (std::trunc(end) == end) {
                EXPECT_FALSE(isOfTheArgument(with(std::to_string(std::llround(end))))) << name << " " << end;
            }
        }
        for (double const outside : {boundOf(*least) - 0.01, boundOf(*most) + 0.01})
            EXPECT_TRUE(isOfTheArgument(with(std::to_string(outside)))) << name << " " << outside;
        EXPECT_TRUE(isOfTheArgument(with("\"3\""))) << name;
    }
}

}

TEST(RecordRequest, checksItsArgumentsInOrder) {
    auto const target = std::string(R"("target":{"display":"display-1"})");
    auto const exactlyOne = "invalid_arguments: target must name exactly one of display, window, app or area.";
    EXPECT_EQ(recordRefusal(R"({"aspect":"2:1"})"), "invalid_arguments: target is required.");
    EXPECT_EQ(recordRefusal(R"({"target":null})"), "invalid_arguments: target is required.");
    for (auto const* const none : {"{}", "3", R"({"display":null})", R"({"display":"a","window":"b"})"})
        EXPECT_EQ(recordRefusal(R"({"aspect":"2:1","target":)" + std::string(none) + "}"), exactlyOne) << none;
    EXPECT_EQ(recordRefusal("{" + target + R"(,"aspect":"2:1","countdown":11})"),
              "invalid_arguments: aspect must be free, 16:9, 9:16, 1:1, 4:5 or 4:3.");
    EXPECT_EQ(recordRefusal("{" + target + R"(,"countdown":11,"seconds":0})", RecordingLength::fixed),
              "invalid_arguments: countdown must be 0–10.");
    for (auto const* const seconds : {"0.9", "600.1", "\"5\"", "null"})
        EXPECT_EQ(recordRefusal("{" + target + ",\"seconds\":" + seconds + "}", RecordingLength::fixed),
                  "invalid_arguments: seconds must be 1–600.");
    EXPECT_EQ(recordRefusal("{" + target + R"(,"camera":1})"), "invalid_arguments: camera must be true or false.");
}

TEST(RecordRequest, anAreaHasADisplayAndSidesOf32) {
    auto const area = [](std::string const& parts) { return R"({"target":{"area":)" + parts + "}}"; };
    auto const sentence = "invalid_arguments: area needs display, x, y, width ≥ 32 and height ≥ 32.";
    for (auto const* const parts :
         {"{}", "[]", R"({"display":"d","x":0,"y":0,"width":31,"height":32})",
          R"({"display":"d","x":0,"y":0,"width":32,"height":31.9})", R"({"display":"d","x":0,"width":32,"height":32})",
          R"({"display":"","x":0,"y":0,"width":32,"height":32})",
          R"({"display":"d","x":"0","y":0,"width":32,"height":32})"})
        EXPECT_EQ(recordRefusal(area(parts)), sentence) << parts;
    auto const request = recording(area(R"({"display":"d","x":-5,"y":2.5,"width":32,"height":32.0})"));
    auto const& wanted = std::get<RecordRequest::Area>(request.target);
    EXPECT_EQ(wanted.x, -5);
    EXPECT_EQ(wanted.y, 2.5);
    EXPECT_EQ(wanted.height, 32);
    EXPECT_EQ(request.countdown, 3);
    EXPECT_FALSE(request.microphone);
}

TEST(TimelineOp, checksItsArgumentsInOrder) {
    auto const invalid = [](std::string const& sentence) { return "invalid_arguments: " + sentence; };
    for (auto const* const op : {"{}", R"({"op":"Trim"})", R"({"op":3})"})
        EXPECT_EQ(opRefusal(op), invalid("op must be trim, cut, speed, split, mute or volume."));
    for (std::string const op : {"trim", "cut", "speed"}) {
        auto const with = [&](std::string const& rest) { return opRefusal(R"({"op":")" + op + '"' + rest + "}"); };
        EXPECT_EQ(with(R"(,"end":3)"), invalid("start is required."));
        EXPECT_EQ(with(R"(,"start":3)"), invalid("end is required."));
        EXPECT_EQ(with(R"(,"start":30,"end":30.0)"), invalid("end must be after start."));
        EXPECT_EQ(with(R"(,"start":3,"end":10.5,"rate":99)"), invalid("10.5 is past the end."));
    }
    for (auto const* const rate : {"0.24", "16.1", "null", "true"})
        EXPECT_EQ(opRefusal(R"({"op":"speed","start":0,"end":1,"rate":)" + std::string(rate) + "}"),
                  invalid("rate must be 0.25–16."));
    for (auto const* const rate : {"0.25", "16", "16.0"})
        EXPECT_EQ(opRefusal(R"({"op":"speed","start":0,"end":1,"rate":)" + std::string(rate) + "}"), "");
    EXPECT_EQ(opRefusal(R"({"op":"split"})"), invalid("time is required."));
    for (auto const* const time : {"0", "10", "10.0", "-1", "11"})
        EXPECT_EQ(opRefusal(R"({"op":"split","time":)" + std::string(time) + "}"),
                  invalid("time must be inside the video."));
    for (std::string const op : {"mute", "volume"}) {
        EXPECT_EQ(opRefusal(R"({"op":")" + op + R"(","track":"mic"})"),
                  invalid("track must be microphone, system, voiceover, music or camera."));
        EXPECT_EQ(opRefusal(R"({"op":")" + op + R"(","track":"music"})"), invalid("This project has no music track."));
    }
    EXPECT_EQ(opRefusal(R"({"op":"mute","track":"microphone","muted":1})"), invalid("mute needs \"muted\"."));
    EXPECT_EQ(opRefusal(R"({"op":"volume","track":"microphone","level":2.1})"), invalid("level must be 0–2."));
}

TEST(TimelineOp, makesTheEditThatItsNameSays) {
    auto const edited = [](std::string const& arguments) {
        auto project = film();
        auto const given = JSONValue::parse(arguments);
        perform(project, timelineOp(ToolArguments(std::get<JSONValue::Object>(given.content)), project));
        return project;
    };
    EXPECT_EQ(edited(R"({"op":"trim","start":2,"end":5})").duration(), 3);
    EXPECT_EQ(edited(R"({"op":"cut","start":2,"end":10.004})").duration(), 2) << "lengths are told in hundredths";
    EXPECT_EQ(edited(R"({"op":"speed","start":0,"end":8,"rate":2})").duration(), 6);
    EXPECT_EQ(edited(R"({"op":"split","time":4})").timeline.clips.size(), 2u);
    EXPECT_TRUE(edited(R"({"op":"mute","track":"microphone","muted":true})").audioTracks[0].isMuted);
    EXPECT_EQ(edited(R"({"op":"volume","track":"microphone","level":0})").audioTracks[0].gain, 0);
}

TEST(ProjectPatch, takesAViewThatComesBackAndRefusesWhatIsNotShown) {
    auto const patchRefusal = [](std::string const& arguments) {
        return refused(arguments, [](ToolArguments const& given) { projectPatch(given); });
    };
    for (auto const* const none : {"{}", R"({"patch":null})", R"({"patch":"{}"})", R"({"patch":[]})"})
        EXPECT_EQ(patchRefusal(none), "invalid_arguments: patch must be a JSON object.");
    EXPECT_EQ(patchRefusal(R"({"patch":{"cameraFaces":[]}})"),
              "invalid_patch: \"cameraFaces\" is not a project field. Check get_project for the names.");
    auto const given =
        JSONValue::parse(R"({"patch":{"duration":3,"modifiedAt":"2026-01-01T00:00:00Z","name":"Tour"}})");
    auto project = film();
    auto const modified = project.modifiedAt;
    perform(project, projectPatch(ToolArguments(std::get<JSONValue::Object>(given.content))));
    EXPECT_EQ(project.name, "Tour");
    EXPECT_EQ(project.modifiedAt, modified);
    EXPECT_EQ(project.duration(), 10);
}

TEST(ProjectActions, areThoseOfTheCatalogueWithItsOptions) {
    auto const& names = *properties(MCPToolName::runAction).find("action")->find<JSONValue::Array>("enum");
    ASSERT_EQ(names.size(), allCases<ActionName>().size());
    for (std::size_t i = 0; i < names.size(); ++i)
        EXPECT_EQ(*names[i].as<std::string>(), nameOf(allCases<ActionName>()[i]));
    auto const& help = *properties(MCPToolName::runAction).find("options")->find<std::string>("description");
    forEachField<PolishOptions>([&](auto const& field) {
        EXPECT_NE(help.find(field.name), help.npos) << field.name;
        auto const given =
            JSONValue::parse(R"({"action":"auto_polish","options":{")" + std::string(field.name) + R"(":false}})");
        auto const action = projectAction(ToolArguments(std::get<JSONValue::Object>(given.content)), film());
        PolishOptions expected;
        expected.*field.member = false;
        EXPECT_EQ(std::get<PolishOptions>(action.work), expected) << field.name;
    });
}

TEST(ProjectActions, checkTheirArgumentsInOrder) {
    auto const invalid = [](std::string const& sentence) { return "invalid_arguments: " + sentence; };
    auto const action = [](std::string const& name, std::string const& options) {
        return R"({"action":")" + name + R"(","options":)" + options + "}";
    };
    EXPECT_EQ(actionRefusal("{}"), invalid("action is required."));
    EXPECT_EQ(actionRefusal(R"({"action":"polish"})"), invalid("Unknown action \"polish\"."));
    EXPECT_EQ(actionRefusal(action("remove_silence", "[]")), invalid("options must be an object."));
    for (auto const* const options : {R"({"smartzoom":true})", R"({"smartZoom":1})", R"({"captions":null})"})
        EXPECT_EQ(actionRefusal(action("auto_polish", options)),
                  invalid("auto_polish options must be booleans named as in the tool description."));
    for (auto const* const name : {"captions_from_transcript", "remove_fillers", "tighten_pauses", "delete_words"})
        EXPECT_EQ(actionRefusal(action(name, R"({"max_characters":0,"max_pause":-1})"), film()),
                  invalid("This project has no transcript yet. Run the transcribe action first."));
    for (auto const* const options : {"{}", R"({"from_word":0})", R"({"from_word":0,"to_word":3})",
                                      R"({"from_word":-1,"to_word":1})", R"({"from_word":0.5,"to_word":1})"})
        EXPECT_EQ(actionRefusal(action("delete_words", options)),
                  invalid("from_word and to_word must be indices 0…2."));
    EXPECT_EQ(actionRefusal(action("delete_words", R"({"from_word":2,"to_word":1})")),
              invalid("to_word must not be before from_word."));
    EXPECT_EQ(actionRefusal(action("delete_words", R"({"from_word":0.0,"to_word":2})")), "");
    EXPECT_EQ(actionRefusal(action("delete_words", "{}"), spokenFilm(0)), invalid("The transcript has no words."));
    EXPECT_EQ(actionRefusal(action("captions_from_transcript", R"({"max_characters":0})")),
              invalid("max_characters must be 1–1000."));
    EXPECT_EQ(actionRefusal(action("speed_up_typing", R"({"rate":17})")), invalid("rate must be 1–16."));
    EXPECT_EQ(actionRefusal(action("transcribe", R"({"locale":1})")), invalid("locale must be a text."));
    EXPECT_EQ(actionRefusal(action("draft_voiceover_script", R"({"style":"loud"})")),
              invalid("style must be demo, launch, tutorial, pitch or social."));
    EXPECT_EQ(actionRefusal(action("draft_voiceover_script", R"({"product_name":")" + std::string(61, 'x') + "\"}")),
              invalid("product_name: a product's name has 60 characters at most."));
}

TEST(ProjectActions, sayWhatTheyDid) {
    auto const done = [](std::string const& name, DemoProject project) {
        auto const given = JSONValue::parse(R"({"action":")" + name + R"("})");
        auto const action = projectAction(ToolArguments(std::get<JSONValue::Object>(given.content)), project);
        auto const before = project;
        auto const report = perform(project, std::get<Operation>(action.work));
        EXPECT_EQ(report.isChanged, project.duration() < before.duration()) << name;
        EXPECT_TRUE(report.isChanged) << name;
        return actionSummary(action, before, report);
    };
    EXPECT_TRUE(done("remove_fillers", spokenFilm(4)).ends_with(" s of filler words."));
    auto pausing = spokenFilm(4);
    pausing.transcript->edit().words[3].end = 9;
    pausing.transcript->edit().words[3].start = 8;
    EXPECT_TRUE(done("tighten_pauses", pausing).starts_with("Tightened pauses: "));
    auto typed = film();
    for (int i = 0; i < 20; ++i) typed.metadata.edit().keystrokes.push_back({.t = 1 + i * 0.3, .keys = {"•"}});
    EXPECT_EQ(done("speed_up_typing", typed), "Sped up 1 typing stretches.");
    auto const drafting = JSONValue::parse(R"({"action":"draft_voiceover_script","options":{"style":"social"}})");
    auto drafted = film();
    auto const draft = projectAction(ToolArguments(std::get<JSONValue::Object>(drafting.content)), drafted);
    auto const report = perform(drafted, std::get<Operation>(draft.work));
    EXPECT_TRUE(actionSummary(draft, film(), report).starts_with("Drafted a script of "));
    EXPECT_EQ(drafted.voiceover.value().segments[0].text, "You're doing this the slow way. Watch.");
}

TEST(UnspokenLines, areExplainedByWhatStoppedThem) {
    using enum VoiceError::Kind;
    SpokenLines lines{.spoken = {{}, {}}, .unspoken = {{.kind = tooLong, .sentence = "It is too long."}}};
    auto const failure = unspokenLines(lines);
    EXPECT_STREQ(failure.what(), "1 of 3 lines were not spoken: It is too long. What was spoken is kept.");
    lines.notBegun.resize(4);
    lines.isCancelled = true;
    EXPECT_STREQ(unspokenLines(lines).what(),
                 "5 of 7 lines were not spoken: The voiceover was cancelled. What was spoken is kept.");
    lines.isCancelled = false;
    lines.stopped = "Add a key";
    lines.unspoken.push_back({.kind = noKey, .sentence = "Add a key"});
    EXPECT_STREQ(unspokenLines(lines).what(), "6 of 8 lines were not spoken: Add a key. What was spoken is kept.");
    EXPECT_EQ(unspokenLines(lines).code, MCPErrorCode::needsVoiceKey);
    EXPECT_EQ(failure.code, MCPErrorCode::failed);
    lines.spoken.clear();
    EXPECT_STREQ(unspokenLines(lines).what(), "6 of 6 lines were not spoken: Add a key.");
}

TEST(ExportArguments, areHeldToTheCatalogue) {
    expectLimits(MCPToolName::exportFilm, R"("width":640,"height":640,)", exportRefusal);
    EXPECT_EQ(exportRefusal(R"({"container":"avi","preset":"none"})"), "invalid_arguments: Unknown container.");
    EXPECT_EQ(exportRefusal(R"({"preset":"none","fps":0})"),
              "not_found: There is no preset \"none\". See list_export_presets.");
    EXPECT_EQ(exportRefusal(R"({"width":640})"), "invalid_arguments: width and height go together.");
    EXPECT_EQ(exportRefusal(R"({"codec":"av1"})"), "invalid_arguments: codec must be h264, hevc or proRes422.");
    for (auto const& name : *properties(MCPToolName::exportFilm).find("codec")->find<JSONValue::Array>("enum"))
        EXPECT_EQ(exportRefusal(R"({"codec":")" + *name.as<std::string>() + "\"}"), "");
}

TEST(ExportPaths, areAbsoluteAndHaveNamesThatFilesCanHave) {
    EXPECT_EQ(refusal([] { exportPaths::given("film.mp4"); }),
              "invalid_arguments: output_path must be an absolute path.");
    EXPECT_EQ(refusal([] { exportPaths::given("~/film.mp4"); }),
              "invalid_arguments: output_path must be an absolute path.");
    EXPECT_EQ(exportPaths::given("/tmp/film.mp4"), "/tmp/film.mp4");
    EXPECT_EQ(exportPaths::fileName("Tour", {.presetID = "youtube-4k"}), "Tour — YouTube.mp4");
    EXPECT_EQ(exportPaths::fileName("a/b: c\n", {.container = ExportContainer::gif}), "a-b- c — Custom.gif");
    for (auto const& name : std::vector<std::string>{"", "  ", "\n", "../..", ".hidden", std::string(5000, 'x')}) {
        auto const file = exportPaths::fileName(name, {});
        EXPECT_EQ(std::filesystem::path(file).filename(), file) << name;
        EXPECT_FALSE(file.starts_with('.') || file.starts_with(' ')) << file;
        EXPECT_LE(file.size(), 240u);
    }
}
