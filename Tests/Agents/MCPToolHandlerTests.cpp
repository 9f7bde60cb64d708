#include "../Capture/TestDisplay.h"
#include "../Capture/TestSoundServer.h"
#include "../Core/Package/TemporaryFolder.h"

#include <Tavaro/Agents/Private/MCPToolHandler.h>
#include <Tavaro/Model/Privacy/PrivacyPreferences.h>
#include <Tavaro/Model/Recording/RecordingPreferences.h>

#include <TavaroCapture/Recorder/ScreenRecorder.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroMCP/Catalogue/MCPToolCatalog.h>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <chrono>
#include <cstdlib>
#include <fstream>

using namespace tavaro;
using ::testing::AllOf;
using ::testing::ContainsRegex;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;
namespace fs = std::filesystem;

namespace {

class MCPToolHandlerTest : public DisplayTest {
protected:
    MCPToolHandlerTest() { setenv("XDG_DATA_HOME", folder.path().c_str(), 1); }
    void SetUp() override {
        DisplayTest::SetUp();
        if (display) setenv("DISPLAY", display->name().c_str(), 1);
    }
    ~MCPToolHandlerTest() override {
        unsetenv("XDG_DATA_HOME");
        unsetenv("DISPLAY");
    }

    MCPToolHandler::Abandon begin(std::string const& tool, std::string const& arguments) {
        result.reset();
        return handler.handle({.tool = tool,
                               .arguments = std::get<JSONValue::Object>(JSONValue::parse(arguments).content),
                               .client = "tester",
                               .progress =
                                   [this](double, std::string const&) {
                                       ++progress;
                                       if (reported) reported();
                                   },
                               .finish = [this](ToolResult const& made) { result = made.json.value(); }});
    }
    /// The text of the result, behind "code: " where it is a failure.
    std::string end() {
        queue.runUntil([&] { return result.has_value(); });
        auto const& text = *result->find<JSONValue::Array>("content")->back().find<std::string>("text");
        return *result->find<bool>("isError") ? *structured().find<std::string>("code") + ": " + text : text;
    }
    std::string called(std::string const& tool, std::string const& arguments = "{}") {
        static_cast<void>(begin(tool, arguments));
        return end();
    }
    JSONValue const& structured() const { return *result->find("structuredContent"); }
    std::string withID(std::string const& rest) const { return R"({"project_id":")" + id + '"' + rest + "}"; }
    void record() {
        ASSERT_THAT(called("record_for", R"({"target":{"display":"display-1"},"seconds":1,"countdown":0})"),
                    EndsWith(" s). Auto Polish has run."));
        id = *structured().find<std::string>("project_id");
    }
    OpenProject& project() { return *application.projects().find(*UUID::parse(id)); }

    TemporaryFolder const folder;
    MainQueue queue;
    Application application{queue,
                            {.library = {folder / "Movies"},
                             .index = folder / "cache/library.json",
                             .preferences = folder / "config/preferences.json"}};
    MCPToolHandler handler{queue, application, "1.2"};
    std::optional<JSONValue> result;
    int progress = 0;
    std::function<void()> reported; // on progress
    std::string id;
};

}

TEST_F(MCPToolHandlerTest, everyToolAnswersOnceWhateverItIsGiven) {
    for (auto const& tool : toolCatalog::all()) {
        std::string const name(nameOf(tool.name));
        auto const answer = called(name);
        bool const needsSomething = !tool.inputSchema.find<JSONValue::Array>("required")->empty();
        if (needsSomething) {
            EXPECT_THAT(answer, StartsWith("invalid_arguments: ")) << name;
        }
        if (name.starts_with("ui_")) {
            EXPECT_EQ(*result->find<bool>("isError"), name != "ui_screenshot") << name << " without a word of what";
        }
        auto const given = R"({"app":"x","title":"x","down":1,"text":"x","project_id":"x","target":{"window":"x"},)"
                           R"("seconds":1,"time":1,"op":"cut","action":"transcribe","patch":{}})";
        if (needsSomething) {
            EXPECT_THAT(called(name, given), StartsWith("not_found: ")) << name;
        }
    }
    EXPECT_THAT(called("Status"), StartsWith("not_found: "));
    EXPECT_TRUE(application.recorder().isIdle());
}

TEST_F(MCPToolHandlerTest, whatNobodyWaitsForStopsInTheMiddle) {
    ASSERT_THAT(called("ui_click", R"({"x":5,"y":5,"glide":0,"hold":0})"), StartsWith("Clicked 5, 5"));
    auto const abandon = begin("ui_click", R"({"x":600,"y":400,"glide":5,"hold":60})");
    auto const start = std::chrono::steady_clock::now();
    abandon();
    EXPECT_EQ(end(), "failed: The action was cancelled.");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_THAT(called("ui_screenshot"), HasSubstr("To click a pixel (px, py): x = "));
}

TEST_F(MCPToolHandlerTest, whatNobodyWaitsForAnyMoreDoesNotBegin) {
    fs::create_directories(folder / "applications");
    std::ofstream(folder / "applications/marker.desktop")
        << "[Desktop Entry]\nType=Application\nName=Marker\nExec=touch " << (folder / "mark").string() << "\n";
    auto const abandonFirst = begin("ui_click", R"({"x":5,"y":5,"glide":0,"hold":60})");
    auto const abandonSecond = begin("ui_open_app", R"({"app":"Marker"})");
    abandonSecond();
    abandonFirst();
    end();
    result.reset();
    EXPECT_EQ(end(), "failed: The action was cancelled.");
    EXPECT_FALSE(fs::exists(folder / "mark"));
}

TEST_F(MCPToolHandlerTest, aSessionFromTheSourcesToTheFilm) {
    ASSERT_EQ(called("list_sources"), "Recordable sources");
    EXPECT_EQ(*structured().find<JSONValue::Array>("displays")->front().find<std::string>("id"), "display-1");
    record();
    EXPECT_GT(progress, 0);
    EXPECT_THAT(called("list_projects"), StartsWith("1 projects"));
    EXPECT_EQ(called("open_project", withID("")).find("failed"), std::string::npos);

    called("get_project", withID(""));
    auto const duration = structured().find("duration");
    ASSERT_TRUE(duration);
    auto const before = encodeProject(project().document());
    EXPECT_EQ(called("edit_project", withID(R"(,"patch":{"name":"Tour"})")), "Changed name.");
    EXPECT_EQ(project().undoName(), "Change Project (tester)");
    EXPECT_FALSE(project().hasUnsavedChanges());
    EXPECT_EQ(project().package().load().name, "Tour");
    project().undo();
    EXPECT_EQ(encodeProject(project().document()), before);
    project().redo();
    auto const revision = project().revision();
    EXPECT_EQ(called("edit_project", withID(R"(,"patch":{"name":"Tour"})")), "The project is that way already.");
    EXPECT_THAT(called("edit_project", withID(R"(,"patch":{"name":"X","nme":"Y"})")),
                StartsWith("invalid_patch: \"nme\" is not a project field."));
    EXPECT_EQ(called("edit_project", withID(R"(,"patch":{"timeline":{}})")),
              "invalid_patch: \"timeline\" can't be changed. Use edit_timeline.");
    EXPECT_EQ(project().revision(), revision);

    EXPECT_EQ(called("edit_timeline", withID(R"(,"op":"trim","start":0,"end":0.5)")), "Timeline edited. Now 0.50 s.");
    EXPECT_EQ(project().undoName(), "Trim (tester)");
    EXPECT_THAT(called("run_action", withID(R"(,"action":"auto_polish","options":{"smartZoom":false})")),
                StartsWith("Auto Polish done: "));
    EXPECT_FALSE(project().hasUnsavedChanges());
    EXPECT_THAT(called("run_action", withID(R"(,"action":"transcribe")")),
                StartsWith("failed: This project has no microphone"));
    EXPECT_THAT(called("render_frame", withID(R"(,"time":0.2,"max_width":320)")), HasSubstr("320 × "));
    EXPECT_EQ(called("render_frame", withID(R"(,"time":7)")), "invalid_arguments: time must be inside the video.");

    auto const film = folder / "film.mp4";
    auto const exporting = withID(R"(,"width":320,"height":180,"fps":10,"output_path":")" + film.string() + '"');
    EXPECT_EQ(called("export", exporting), "Exported to " + film.string() + ".");
    EXPECT_TRUE(fs::exists(film));
    EXPECT_EQ(called("export", exporting), "Exported to " + (folder / "film 2.mp4").string() + ".");
    static_cast<void>(begin("export", exporting));
    EXPECT_EQ(called("export", exporting), "busy: Another export is running. Wait for it to finish.");
    queue.runUntil([&] { return !application.isBusy(); });
}

TEST_F(MCPToolHandlerTest, aScriptIsSpokenByAVoiceOfThisMachineAsOneStepAndOtherVoicesNeedAKey) {
    record();
    auto const voiceover = [&](std::string const& voice) {
        return withID(R"(,"action":"generate_voiceover","options":{"voice":")" + voice + "\"}");
    };
    EXPECT_EQ(called("run_action", voiceover("system:flite/slt")), "failed: Run draft_voiceover_script first.");
    project().commit("Script", [](DemoProject& edited) {
        edited.voiceover.emplace().segments = {{.text = "Hello there.", .anchor = 0.2}, {.text = "That is all."}};
    });
    EXPECT_EQ(called("run_action", voiceover("EXAVITQu4vr4xnSDxMaL")),
              "needs_voice_key: That voice needs an ElevenLabs key: Tavaro → Settings → Voiceover. "
              "Or use a system voice.");
    EXPECT_EQ(called("run_action", voiceover("system:flite/slt")), "Voiceover generated.");
    EXPECT_EQ(project().undoName(), "Generate Voiceover (tester)");
    EXPECT_FALSE(project().hasUnsavedChanges());
    auto const& lines = project().document().voiceover->segments;
    EXPECT_TRUE(fs::exists(project().package().assetURL(lines[1].audioAsset.value())));
    EXPECT_DOUBLE_EQ(lines[1].start, lines[0].end());
    EXPECT_THAT(called("run_action", voiceover("system:flite/nobody")), StartsWith("failed: 2 of 2 lines"));
    EXPECT_EQ(project().document().voiceover->voice.voiceID, "system:flite/slt");
}

TEST_F(MCPToolHandlerTest, aProjectThatIsEditedWhileItIsPolishedIsPolishedAgain) {
    record();
    int edits = 0, most = 2;
    reported = [&] {
        if (edits >= most) return;
        ++edits;
        project().edit("Rename", [&](DemoProject& edited) { edited.name = std::to_string(edits); });
    };
    auto const polish = withID(R"(,"action":"auto_polish","options":{"smartZoom":false})");
    EXPECT_THAT(called("run_action", polish), StartsWith("Auto Polish done: "));
    EXPECT_EQ(edits, 2);
    EXPECT_EQ(project().document().name, "2");
    EXPECT_FALSE(project().hasUnsavedChanges());
    most = 100;
    EXPECT_EQ(called("run_action", polish), "failed: The project was changed meanwhile. Run auto_polish again.");
    EXPECT_LT(edits, 10);
}

TEST_F(MCPToolHandlerTest, aProjectThatAnotherProgramEditsHoldsUpNobodyElse) {
    record();
    called("open_project", withID(""));
    std::optional lock = project().package().lockForEditing();
    static_cast<void>(begin("edit_project", withID(R"(,"patch":{"name":"Tour"})")));
    queue.runUntil([tries = 0]() mutable { return ++tries == 10; });
    EXPECT_FALSE(result);
    EXPECT_EQ(called("status"), "Tavaro status");
    lock.reset();
    result.reset();
    EXPECT_EQ(end(), "Changed name.");
    EXPECT_EQ(project().package().load().name, "Tour");
    lock = project().package().lockForEditing();
    EXPECT_THAT(called("edit_timeline", withID(R"(,"op":"trim","start":0,"end":0.5)")),
                AllOf(StartsWith("failed: Could not save"), EndsWith("another program is editing it.")));
}

TEST_F(MCPToolHandlerTest, ordersToTheRecorderAnswerForWhatTheyFind) {
    for (auto const* const order : {"stop_recording", "pause_recording", "resume_recording", "cancel_recording"})
        EXPECT_EQ(called(order), "not_recording: Nothing is recording.");
    auto const start = R"({"target":{"display":"display-1"},"countdown":0})";
    application.preferences().set(cameraChosen, "tuba");
    application.preferences().set(cameraRecorded, true);
    for (std::string const camera : {"", R"(,"camera":true)"})
        EXPECT_EQ(called("start_recording", R"({"target":{"display":"display-1"})" + camera + "}"),
                  "failed: Recording didn't start. There is no camera “tuba”. `tavaro sources` lists those there are.");
    application.preferences().set(cameraRecorded, false);
    EXPECT_EQ(called("start_recording", R"({"target":{"display":"display-9"},"countdown":0})"),
              "not_found: There is no source \"display-9\". Call list_sources for ids.");
    EXPECT_EQ(called("start_recording", start), "Recording. Call stop_recording to finish.");
    for (std::string const more : {"", R"(,"camera":true)"})
        EXPECT_EQ(called("start_recording", R"({"target":{"window":"x"},"countdown":0)" + more + "}"),
                  "busy: A recording is already in progress.");
    EXPECT_EQ(called("resume_recording"), "not_recording: The recording isn't paused.");
    EXPECT_THAT(called("pause_recording"), StartsWith("Paused."));
    called("status");
    EXPECT_EQ(*structured().find("recorder")->find<std::string>("phase"), "paused");
    EXPECT_EQ(called("cancel_recording"), "Recording thrown away.");
    EXPECT_THAT(called("list_projects"), StartsWith("0 projects"));
}

TEST_F(MCPToolHandlerTest, whoStartsARecordingHearsOfOneThatNobodyFinished) {
    {
        ScreenRecorder abandoned({.display = display->name()});
        abandoned.start();
        ASSERT_TRUE(eventually([&] { return abandoned.progress().framesWritten > 60; }));
    }
    auto const offer = HasSubstr("We found an unfinished recording of 20");
    EXPECT_THAT(called("start_recording", R"({"target":{"display":"display-1"},"countdown":0})"),
                AllOf(StartsWith("Recording. Call stop_recording to finish. "), offer));
    EXPECT_THAT(encodeJSON(structured()), offer);
    EXPECT_EQ(called("cancel_recording"), "Recording thrown away.");
    record();
    EXPECT_THAT(encodeJSON(structured()), offer);
}

TEST_F(MCPToolHandlerTest, aTakeThatEndsByItselfIsReportedOnceToWhoStopsIt) {
    auto const makeWindow = [&] {
        return client->makeWindow({.frame = {10, 10, 200, 100}, .windowClass = "demo", .title = "Demo"});
    };
    auto const recording = [&](std::uint32_t window, std::string const& rest) {
        return R"({"countdown":0,"target":{"window":")" + std::to_string(window) + "\"}" + rest + "}";
    };
    auto const window = makeWindow();
    ASSERT_THAT(called("start_recording", recording(window, "")), StartsWith("Recording."));
    queue.runUntil([&] { return application.recorder().state().take.framesWritten > 3; });
    client->destroy(window);
    queue.runUntil([&] { return application.recorder().isIdle(); });
    called("status");
    auto const* const unreported = structured().find("unreported");
    ASSERT_TRUE(unreported);
    auto const kept = *unreported->find<std::string>("project_id");
    auto const early = "It ended by itself: What was being recorded went away: the window was closed or the display "
                       "ended. Saved as project ";
    EXPECT_THAT(called("stop_recording"), AllOf(StartsWith(early + kept), EndsWith(" s). Auto Polish has run.")));
    EXPECT_EQ(*structured().find<std::string>("project_id"), kept);
    called("status");
    EXPECT_FALSE(structured().find("unreported"));
    EXPECT_EQ(encodeJSON(*structured().find("recorder")), R"({"countdown":0,"phase":"idle","seconds":0})");
    EXPECT_EQ(called("stop_recording"), "not_recording: Nothing is recording.");

    auto const other = makeWindow();
    static_cast<void>(begin("record_for", recording(other, R"(,"seconds":60)")));
    queue.runUntil([&] { return application.recorder().state().take.framesWritten > 3; });
    client->destroy(other);
    EXPECT_THAT(end(), StartsWith(early));
    static_cast<void>(begin("record_for", R"({"target":{"display":"display-1"},"seconds":60,"countdown":0})"));
    queue.runUntil([&] { return application.recorder().state().take.framesWritten > 3; });
    application.recorder().stop();
    EXPECT_THAT(end(), StartsWith("It was stopped before its 60 s were over. Saved as project "));
    EXPECT_EQ(called("stop_recording"), "not_recording: Nothing is recording.");
}

TEST_F(MCPToolHandlerTest, anAreaIsCutToItsDisplayAndSaidSo) {
    auto const areaAt = [](int x, int y) {
        return fmt::format(R"({{"seconds":1,"countdown":0,"target":{{"area":{{"display":"display-1","x":{},"y":{},)"
                           R"("width":200,"height":100}}}}}})",
                           x, y);
    };
    EXPECT_EQ(called("record_for", areaAt(700, 0)),
              "invalid_arguments: The area 700,0,200,100 cannot be recorded: it lies outside display-1.");
    EXPECT_THAT(called("record_for", areaAt(540, 0)),
                AllOf(StartsWith("Of the area, 100 × 100 pixels were recorded. Saved as project "),
                      EndsWith(" s). Auto Polish has run.")));
    EXPECT_THAT(called("record_for", areaAt(0, 0)), StartsWith("Saved as project "));
}

TEST_F(MCPToolHandlerTest, aProjectThatIsGoneIsNoOpenOne) {
    record();
    called("open_project", withID(""));
    called("status");
    EXPECT_EQ(*structured().find("project")->find<std::string>("id"), id);
    fs::remove_all(project().package().url());
    called("status");
    EXPECT_EQ(*structured().find("project"), JSONValue());
}

TEST_F(MCPToolHandlerTest, whoLeavesWhileTheProjectIsOpenedGetsNoFrameDrawn) {
    record();
    ASSERT_FALSE(application.projects().find(*UUID::parse(id)));
    auto const abandon = begin("render_frame", withID(R"(,"time":0)"));
    abandon();
    EXPECT_TRUE(handler.isPerforming());
    EXPECT_EQ(end(), "interrupted: Dropped.");
    EXPECT_FALSE(handler.isPerforming());
}

TEST_F(MCPToolHandlerTest, aTakeLogsNoMoreKeysThanTheUserWants) {
    auto const logsKeys = [&] {
        called("record_for", R"({"target":{"display":"display-1"},"seconds":1,"countdown":0})");
        auto const package = fs::path(*structured().find<std::string>("path"));
        return ProjectPackage(package).load().metadata->health.keyboardCaptured.value_or(true);
    };
    EXPECT_TRUE(logsKeys());
    application.preferences().set(keysChosen, "none");
    EXPECT_FALSE(logsKeys());
}

TEST_F(MCPToolHandlerTest, soundIsRecordedAsItIsAskedForAndElseAsTheApplicationIsSet) {
    if (!TestSoundServer::isInstalled()) GTEST_SKIP() << "pulseaudio is not installed";
    TestSoundServer const server;
    SpokenClicks const clicks(server.microphonePipe());
    setenv("PULSE_SERVER", server.address().c_str(), 1);
    called("list_sources");
    auto const& microphones = *structured().find<JSONValue::Array>("microphones");
    ASSERT_EQ(microphones.size(), 1u);
    EXPECT_EQ(*microphones[0].find<std::string>("id"), "mic");

    auto const rolesOf = [&](std::string const& sound) {
        auto const wanted = R"({"target":{"display":"display-1"},"seconds":1,"countdown":0)" + sound + "}";
        EXPECT_THAT(called("record_for", wanted), EndsWith(" s). Auto Polish has run."));
        auto const package = fs::path(*structured().find<std::string>("path"));
        std::vector<AudioRole> roles;
        for (auto const& track : ProjectPackage(package).load().audioTracks) roles.push_back(track.role);
        return roles;
    };
    using ::testing::ElementsAre;
    EXPECT_THAT(rolesOf(""), ElementsAre());
    EXPECT_THAT(rolesOf(R"(,"microphone":true,"system_audio":true)"),
                ElementsAre(AudioRole::microphone, AudioRole::system));
    application.preferences().set(microphoneRecorded, true);
    EXPECT_THAT(rolesOf(""), ElementsAre(AudioRole::microphone));
    EXPECT_THAT(rolesOf(R"(,"microphone":false)"), ElementsAre());
    application.preferences().set(microphoneChosen, "tuba");
    EXPECT_EQ(called("start_recording", R"({"target":{"display":"display-1"}})"),
              "failed: Recording didn't start. There is no microphone “tuba”. `tavaro sources` lists those there are.");
    unsetenv("PULSE_SERVER");
}

TEST_F(MCPToolHandlerTest, aRecordingOfAFixedLengthThatNobodyWaitsForIsKeptAsFarAsItIs) {
    auto const abandon = begin("record_for", R"({"target":{"display":"display-1"},"seconds":600,"countdown":0})");
    queue.runUntil([&] { return application.recorder().state().take.framesWritten > 3; });
    abandon();
    EXPECT_THAT(end(), EndsWith(" s). Auto Polish has run."));
    EXPECT_THAT(called("list_projects"), StartsWith("1 projects"));
    abandon(); // over
}

TEST_F(MCPToolHandlerTest, aTakeIsSavedWhateverComesOfTheScanThatTheUserWantsOfEach) {
    application.preferences().set(newTakesScanned, true);
    setenv("XDG_STATE_HOME", (folder / "state").c_str(), 1);
    ASSERT_THAT(called("record_for", R"({"target":{"display":"display-1"},"seconds":1,"countdown":0})"),
                AllOf(ContainsRegex("private text|secrets|The film hides"), EndsWith(" s). Auto Polish has run.")));
    id = *structured().find<std::string>("project_id");
    auto const answer = called("run_action", withID(R"(,"action":"hide_secrets")"));
    EXPECT_EQ(*result->find<bool>("isError"), answer.starts_with("failed: ")) << answer;
    EXPECT_FALSE(answer.starts_with("invalid_arguments")) << answer;
    bool const isLookedAt = project().document().redactionScan.has_value();
    EXPECT_EQ(isLookedAt, !*result->find<bool>("isError")) << answer;
    unsetenv("XDG_STATE_HOME");
}

TEST_F(MCPToolHandlerTest, whatIsHiddenInANewTakeIsToldWithItAndLookedForAgainWhereSomebodyTookItAway) {
    setenv("XDG_STATE_HOME", (folder / "state").c_str(), 1);
    application.preferences().set(newTakesScanned, true);
    application.newTakes().scanBy([](ScanRequest const&, auto const& told, std::stop_token const&) {
        told({.seconds = 1, .total = 1, .found = 1});
        return ScanOutcome{.findings = {{.kind = SensitiveKind::email,
                                         .masked = "a•••",
                                         .textHash = "hash",
                                         .end = 0.5,
                                         .keyframes = {{0, {0.1, 0.1, 0.2, 0.1}}}}},
                           .ranges = {{0, 60}}};
    });
    EXPECT_THAT(
        called("record_for", R"({"target":{"display":"display-1"},"seconds":1,"countdown":0})"),
        AllOf(StartsWith("The film hides 1 email, from 0:00.00 on. Saved as"), EndsWith(" s). Auto Polish has run.")));
    id = *structured().find<std::string>("project_id");
    EXPECT_EQ(project().document().redactions->size(), 1u);
    EXPECT_FALSE(DueScan::isNoted(project().package().url()));

    called("edit_project", withID(R"(,"patch":{"redactions":[]})"));
    EXPECT_EQ(
        called("run_action", withID(R"(,"action":"hide_secrets","options":{"dry":true})")),
        "invalid_arguments: hide_secrets takes no options: what it looks for is the project's redactionSettings.");
    progress = 0;
    auto const answer = called("run_action", withID(R"(,"action":"hide_secrets")"));
    if (!*result->find<bool>("isError")) {
        EXPECT_GT(progress, 0) << "it was looked at once more";
    }
    unsetenv("XDG_STATE_HOME");
}
