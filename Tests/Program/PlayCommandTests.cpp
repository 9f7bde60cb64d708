#include "../Capture/TestDisplay.h"
#include "ProcessFixture.h"

#include <Tavaro/Agents/MCPConsent.h>
#include <Tavaro/Model/Project/StoredProject.h>

#include <TavaroCore/Records/JSONValue.h>
#include <TavaroMCP/Bridge/MCPSocketPath.h>

#include <gmock/gmock.h>

#include <chrono>
#include <cstdlib>
#include <thread>

using namespace tavaro;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
namespace fs = std::filesystem;

namespace {

class PlayCommand : public ProcessFixture {
protected:
    PlayCommand() { setenv("XDG_CONFIG_HOME", path("config").c_str(), 1); }
    ~PlayCommand() override { unsetenv("XDG_CONFIG_HOME"); }

    RunningProcess serve() {
        auto program = start(TAVARO_PROGRAM, {"serve"});
        EXPECT_TRUE(becomesTrue([&] { return fs::exists(mcpSocketPath()); }));
        return program;
    }
    Outcome play(std::string const& steps, Arguments const& more = {}) {
        write("script.json", "{\"steps\": [" + steps + "]}");
        Arguments words{"play", path("script.json")};
        words.insert(words.end(), more.begin(), more.end());
        return tavaro(words);
    }
    /// Nobody keeps what was allowed for a script.
    static void expectNobodyAllowed() {
        Preferences preferences;
        for (auto const* const list : {&agentsAllowed, &agentsClicking, &agentsDenied})
            EXPECT_THAT(preferences.get(*list), IsEmpty());
    }
};

std::string const begins =
    R"({"tool": "start_recording", "arguments": {"target": {"display": "display-1"}, "countdown": 0}})";

}

TEST_F(PlayCommand, aScriptRecordsEditsLooksAndTheProjectIsWhereItWasWanted) {
    if (!TestDisplay::isInstalled()) GTEST_SKIP() << "no virtual display";
    TestDisplay const display(320, 200);
    setenv("DISPLAY", display.name().c_str(), 1);
    auto const application = serve();
    auto const outcome =
        play(begins + R"(, {"say": "One second", "wait": 1}, {"tool": "stop_recording", "as": "take"},
            {"tool": "edit_timeline",
             "arguments": {"project_id": "${take.project_id}", "op": "cut", "start": 0, "end": 0.2}},
            {"tool": "render_frame", "save": ")" +
                 path("frame.png") +
                 R"(", "arguments": {"project_id": "${take.project_id}", "time": 0.2, "max_width": 64}})",
             {"-o", path("tour")});
    unsetenv("DISPLAY");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_EQ(outcome.out, "Played 5 steps.\n" + path("tour.recproj") + "\n");
    EXPECT_THAT(outcome.error, HasSubstr("1/5 start_recording: Recording. Call stop_recording to finish.\n"));
    EXPECT_THAT(outcome.error, HasSubstr("One second\n2/5 wait: 1.0 s\n3/5 stop_recording: Saved as project "));
    EXPECT_THAT(outcome.error, Not(HasSubstr(" % "))) << "progress is for terminals";
    auto const project = openProject(path("tour")).project;
    EXPECT_EQ(project.name, "tour");
    EXPECT_GT(project.timeline.clips.at(0).duration, 0.5);
    EXPECT_EQ(read("frame.png").substr(1, 3), "PNG");
    expectNobodyAllowed();
}

TEST_F(PlayCommand, aScriptThatFailsIsASentenceAndProgramsGetWhatEachStepGave) {
    auto const application = serve();
    auto const outcome = play(R"({"tool": "status"}, {"tool": "stop_recording"}, {"tool": "status"})", {"--json"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error, "2/3 stop_recording: Nothing is recording.\n");
    EXPECT_EQ(outcome.out, "");
    expectNobodyAllowed();
    auto const good = play(R"({"tool": "list_export_presets", "as": "presets"}, {"wait": 0})", {"--json"});
    auto const printed = JSONValue::parse(good.out);
    auto const& step = printed.find<JSONValue::Array>("steps")->front();
    EXPECT_EQ(*step.find<std::string>("tool"), "list_export_presets");
    EXPECT_TRUE(step.find("result")->find("presets"));
    EXPECT_EQ(good.error, "");
}

TEST_F(PlayCommand, whatAKilledPlayerMayStillDoIsTakenBackByTheNext) {
    auto const application = serve();
    Preferences preferences;
    MCPConsent consent(preferences);
    for (auto const* const name : {"tavaro play 999999999 AB", "tavaro play 1 AB", "tavaro player 999999999"})
        consent.allow(name, MCPConsent::Clicking::allowed);
    EXPECT_EQ(play(R"({"tool": "status"})").exitCode, 0);
    std::vector<std::string> const left{"tavaro play 1 AB", "tavaro player 999999999"};
    EXPECT_EQ(preferences.get(agentsAllowed), left);
    EXPECT_EQ(preferences.get(agentsClicking), left);
}

TEST_F(PlayCommand, whatCannotWorkIsKnownBeforeAnythingIsPlayed) {
    write("taken.png", "");
    fs::create_directories(path("taken.recproj"));
    struct Case {
        std::string steps;
        Arguments more;
        std::string problem;
    };
    std::vector<Case> const cases{
        {R"({"tool": "status"}, {"tool": "nothing"})", {}, "steps[1].tool: there is no tool “nothing”."},
        {R"({"tool": "status"})",
         {"-o", path("tour")},
         "The script makes no recording, so there is no project for -o."},
        {R"({"tool": "stop_recording"})", {"-o", path("taken")}, "something with that name exists already"},
        {R"({"tool": "render_frame", "save": ")" + path("taken.png") + "\"}", {}, "--overwrite replaces it."},
    };
    for (auto const& [steps, more, problem] : cases) {
        auto const outcome = play(steps, more);
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_THAT(outcome.error, HasSubstr(problem));
    }
    tavaro({"mcp", "off"});
    EXPECT_THAT(play(R"({"tool": "status"})").error, HasSubstr("Agent control is off"));
    EXPECT_FALSE(fs::exists(mcpSocketPath())) << "no application was started";
}

TEST_F(PlayCommand, anInterruptionThrowsTheRecordingAwayAndKeepsNoPermission) {
    if (!TestDisplay::isInstalled()) GTEST_SKIP() << "no virtual display";
    TestDisplay const display(320, 200);
    setenv("DISPLAY", display.name().c_str(), 1);
    auto const application = serve();
    write("script.json", "{\"steps\": [" + begins + R"(, {"wait": 60}, {"tool": "stop_recording"}]})");
    auto playing = start(TAVARO_PROGRAM, {"play", path("script.json")});
    EXPECT_TRUE(becomesTrue([&] { return read("logs/2.err").find("1/3 start_recording: ") != std::string::npos; }));
    playing.send(SIGINT);
    auto const outcome = playing.wait();
    unsetenv("DISPLAY");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.error, HasSubstr("2/3 wait: The pause was cancelled. The recording was thrown away.\n"));
    expectNobodyAllowed();
    EXPECT_THAT(play(R"({"tool": "stop_recording"})").error, HasSubstr("Nothing is recording."));
    EXPECT_THAT(names(path("Movies/Tavaro")), IsEmpty());
}

TEST_F(PlayCommand, whatARecordingOfAFixedLengthHasByAnInterruptionIsKeptAndSaidWhere) {
    if (!TestDisplay::isInstalled()) GTEST_SKIP() << "no virtual display";
    TestDisplay const display(320, 200);
    setenv("DISPLAY", display.name().c_str(), 1);
    auto const application = serve();
    write("script.json", R"({"steps": [{"tool": "record_for", "arguments":
        {"target": {"display": "display-1"}, "countdown": 0, "seconds": 600}}]})");
    auto playing = start(TAVARO_PROGRAM, {"play", path("script.json")});
    EXPECT_TRUE(becomesTrue([&] { return fs::exists(path("data/Tavaro/Recordings")); }));
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    playing.send(SIGINT);
    auto const outcome = playing.wait();
    unsetenv("DISPLAY");
    EXPECT_EQ(outcome.exitCode, 1);
    auto const kept = names(path("Movies/Tavaro"));
    ASSERT_EQ(kept.size(), 1u) << outcome.error;
    EXPECT_THAT(outcome.error, HasSubstr(" What was recorded is kept in “" + path("Movies/Tavaro/" + kept[0]) + "”."));
    expectNobodyAllowed();
}
