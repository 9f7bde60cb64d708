#include "../../Core/Package/TemporaryFolder.h"

#include <TavaroMCP/Bridge/BridgeServer.h>
#include <TavaroMCP/Client/ScriptPlayer.h>
#include <TavaroMCP/Protocol/ToolResult.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Records/Data.h>
#include <TavaroCore/Records/JSON.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <mutex>
#include <thread>

using namespace tavaro;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace {

/// Writes down what it is asked for. `busy` fails, `slow` waits until its client is gone.
class NotingApplication final : public BridgeApplication {
public:
    ToolResult answer(BridgeRequest request, BridgeClient& client) override {
        note(request.client + " " + request.tool + " " + encodeJSON(request.arguments));
        client.progress(0.5, "half");
        if (request.tool == busy) return toolResult::failure(MCPErrorCode::busy, "It is busy.");
        while (request.tool == slow && client.isConnected()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
        if (request.tool == "render_frame") return toolResult::image({.bytes = {1, 2, 255}}, "A picture.");
        return toolResult::ok(request.tool + " done.", JSONText(JSONValue::Object{{"id", 7}}));
    }
    std::vector<std::string> noted() {
        std::lock_guard const lock(mutex_);
        return noted_;
    }

    std::string busy, slow; // tools; set before anything is played

private:
    void note(std::string text) {
        std::lock_guard const lock(mutex_);
        noted_.push_back(std::move(text));
    }

    std::mutex mutex_;
    std::vector<std::string> noted_;
};

class ScriptPlayerTest : public testing::Test {
protected:
    ScriptPlayerTest() { setenv("XDG_DATA_HOME", folder.path().c_str(), 1); }

    std::vector<PlayedStep> play(std::string const& steps) {
        BridgeServer const bridge(folder / "Tavaro/mcp.sock", application);
        ScriptPlayer player({.server = server, .name = "Ann", .version = "1"},
                            {.progress = [this](double, std::string const& message) { progress.push_back(message); },
                             .isCancelled = [this] { return isCancelled(); }});
        return player.play(ToolScript::parse("{\"steps\": [" + steps + "]}"));
    }
    std::string failureOf(std::string const& steps) {
        try {
            play(steps);
            return "none";
        } catch (Error const& error) {
            return error.what();
        }
    }

    TemporaryFolder const folder;
    NotingApplication application;
    std::string server = TAVARO_MCP;
    std::vector<std::string> progress;
    std::function<bool()> isCancelled = [] { return false; };
};

std::string const start = R"({"tool": "start_recording", "arguments": {"target": {"display": "d"}}})";
std::string const stop = R"({"tool": "stop_recording", "as": "take"})";

}

TEST_F(ScriptPlayerTest, callsComeInTheirOrderWithWhatEarlierOnesGave) {
    auto const played = play(start + R"(, {"wait": 0.01}, )" + stop +
                             R"(, {"tool": "get_project", "arguments": {"project_id": "${take.id}"}})");
    EXPECT_THAT(application.noted(), ElementsAre(R"(Ann start_recording {"target":{"display":"d"}})",
                                                 "Ann stop_recording {}", R"(Ann get_project {"project_id":7})"));
    ASSERT_EQ(played.size(), 4u);
    EXPECT_EQ(played[1].tool, "wait");
    EXPECT_GE(played[1].seconds, 0.01);
    EXPECT_EQ(played[2].text, "stop_recording done.");
    EXPECT_EQ(encodeJSON(*played[2].result), R"({"id":7})");
    EXPECT_THAT(progress, testing::Contains("half"));
}

TEST_F(ScriptPlayerTest, theFirstFailureEndsItAndThrowsItsRecordingAway) {
    application.busy = "ui_click";
    auto const click = std::string(R"({"tool": "ui_click"}, {"tool": "status"})");
    EXPECT_EQ(failureOf(start + ", " + click), "2/3 ui_click: It is busy. The recording was thrown away.");
    EXPECT_THAT(application.noted().back(), HasSubstr("Ann cancel_recording"));
    EXPECT_EQ(failureOf(start + ", " + stop + ", " + click), "3/4 ui_click: It is busy.") << "what is saved stays";
    EXPECT_EQ(failureOf(start), "The script ended without stop_recording. The recording was thrown away.");
    EXPECT_THAT(failureOf(start + ", " + stop + R"(, {"tool": "status", "arguments": {"x": "${take.nothing}"}})"),
                HasSubstr("3/3 status: arguments.x: the result has no member “nothing”"));
}

TEST_F(ScriptPlayerTest, aRecordingOfSomebodyElseIsLeftAlone) {
    application.busy = "start_recording";
    EXPECT_EQ(failureOf(start), "1/1 start_recording: It is busy.");
    EXPECT_EQ(application.noted().size(), 1u);
}

TEST_F(ScriptPlayerTest, cancellingEndsACallAndAPauseAtOnceAndThrowsTheRecordingAway) {
    application.slow = "export";
    for (auto const* const step : {R"({"tool": "export"})", R"({"wait": 60})", R"({"tool": "start_recording"})"}) {
        auto const begun = std::chrono::steady_clock::now();
        if (std::string(step).find("start") != std::string::npos) application.slow = "start_recording";
        isCancelled = [&] { return std::chrono::steady_clock::now() - begun > std::chrono::milliseconds(300); };
        auto const before = application.slow == "start_recording" ? "" : start + ", ";
        EXPECT_THAT(failureOf(before + step), HasSubstr("cancelled. The recording was thrown away.")) << step;
        EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(3));
        EXPECT_THAT(application.noted().back(), HasSubstr("cancel_recording"));
    }
}

TEST_F(ScriptPlayerTest, picturesAreSavedAndNothingIsOverwritten) {
    auto const file = (folder / "one.png").string();
    auto const frame = R"({"tool": "render_frame", "save": ")" + file + "\"}";
    play(frame);
    EXPECT_EQ(readWholeFile(file), std::string("\x01\x02\xff"));
    EXPECT_THAT(failureOf(frame), HasSubstr("1/1 render_frame: Could not write “" + file));
    EXPECT_EQ(failureOf(R"({"tool": "status", "save": "x.png"})"),
              "1/1 status: The result has no picture that could be saved.");
}

TEST_F(ScriptPlayerTest, aServerWhoseLineDoesNotEndIsNotWaitedFor) {
    server = (folder / "endless").string();
    std::ofstream(server) << "#!/bin/sh\nhead -c 17000000 /dev/zero | tr '\\0' x\nexec sleep 5\n";
    std::filesystem::permissions(server, std::filesystem::perms::owner_all);
    auto const begun = std::chrono::steady_clock::now();
    isCancelled = [&] { return std::chrono::steady_clock::now() - begun > std::chrono::seconds(4); };
    EXPECT_THAT(failureOf(R"({"tool": "status"})"), HasSubstr("sent a line of more than 16 MiB"));
}

TEST_F(ScriptPlayerTest, aServerThatIsNoneIsASentence) {
    for (auto const* const program : {"/no/such/program", "/bin/true", "/bin/cat"}) {
        server = program;
        auto const begun = std::chrono::steady_clock::now();
        isCancelled = [&] { return std::chrono::steady_clock::now() - begun > std::chrono::seconds(2); };
        EXPECT_THAT(failureOf(R"({"tool": "status"})"), testing::StartsWith("1/1 status: ")) << program;
        EXPECT_TRUE(application.noted().empty());
    }
}
