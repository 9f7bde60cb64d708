#include "../Capture/TestDisplay.h"
#include "ProcessFixture.h"
#include "TestTerminal.h"

#include <Tavaro/Agents/MCPConsent.h>
#include <Tavaro/Control/ControlCaller.h>
#include <Tavaro/Control/ControlServer.h>
#include <Tavaro/Model/Privacy/PrivacyPreferences.h>
#include <Tavaro/Model/Recording/RecordingPreferences.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMCP/Bridge/BridgeCaller.h>
#include <TavaroMCP/Bridge/MCPSocketPath.h>

#include <gmock/gmock.h>

#include <cstdlib>
#include <future>
#include <unistd.h>

using namespace tavaro;
using ::testing::EndsWith;
using ::testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

class Serve : public ProcessFixture {
protected:
    Serve() { setenv("XDG_CONFIG_HOME", path("config").c_str(), 1); }
    ~Serve() override { unsetenv("XDG_CONFIG_HOME"); }

    RunningProcess serve(Arguments const& more = {}) {
        Arguments words{"serve"};
        words.insert(words.end(), more.begin(), more.end());
        return start(TAVARO_PROGRAM, words);
    }
    RunningProcess serveAndWait(Arguments const& more = {}) {
        auto program = serve(more);
        EXPECT_TRUE(becomesTrue([&] { return isServing(); })) << program.wait().error;
        return program;
    }
    static bool isServing() { return fs::exists(mcpSocketPath()); }
    bool hasLogged(std::string const& line) const {
        return fs::exists(path(log)) && read(log).find(line) != std::string::npos;
    }
    static void allow(std::string const& client) {
        Preferences preferences;
        MCPConsent(preferences).allow(client);
    }
    /// The text of the result.
    static std::string called(std::string const& tool, JSONValue::Object const& arguments = {},
                              std::vector<std::string> const& starting = {}) {
        auto const result = BridgeCaller({.socket = mcpSocketPath(), .command = starting})
                                .call({tool, arguments, "tester"}, [](double, std::string const&) {});
        return *result.value().find<JSONValue::Array>("content")->back().find<std::string>("text");
    }

    std::string const log = "state/Tavaro/tavaro.log";
};

}

TEST_F(Serve, oneRunsForAUserUntilASignalEndsItAndThenTheNext) {
    for (int const signal : {SIGTERM, SIGINT, SIGKILL}) {
        fs::remove_all(path("state"));
        auto first = serve();
        ASSERT_TRUE(becomesTrue([&] { return hasLogged("has begun"); })) << first.wait().error;
        auto const second = serve().wait();
        EXPECT_EQ(second.exitCode, 1);
        EXPECT_EQ(second.error, "Tavaro is already running.\n");
        first.send(signal);
        EXPECT_EQ(first.wait().exitCode, signal == SIGKILL ? 128 + SIGKILL : 0);
        EXPECT_EQ(hasLogged("has ended"), signal != SIGKILL);
        EXPECT_EQ(isServing(), signal == SIGKILL);
        EXPECT_EQ(fs::status(path("state/Tavaro")).permissions(), fs::perms::owner_all);
    }
}

TEST_F(Serve, anAgentStartsItAndItEndsOnceNobodyUsesIt) {
    allow("tester");
    EXPECT_EQ(called("status", {}, {TAVARO_PROGRAM, "serve", "--until-idle", "0.5"}), "Tavaro status");
    EXPECT_TRUE(becomesTrue([] { return !isServing(); }));
    EXPECT_TRUE(becomesTrue([this] { return hasLogged("has ended"); }));
    auto const program = serveAndWait({"--until-idle"}); // usually a while
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_EQ(called("status"), "Tavaro status");
    EXPECT_TRUE(program.isRunning());
}

TEST_F(Serve, whoNobodyCanBeAskedForIsRefusedUntilAllowed) {
    auto const program = serveAndWait();
    auto const refused = "tester isn't allowed to control Tavaro. Allow it in Tavaro → Settings → MCP.";
    EXPECT_EQ(called("status"), refused);
    EXPECT_EQ(called("no_such_tool"), refused);
    EXPECT_FALSE(fs::exists(Preferences::usualFile()));
    allow("tester");
    EXPECT_EQ(called("status"), "Tavaro status");
    EXPECT_THAT(called("no_such_tool"), HasSubstr("no_such_tool"));
    called("ui_keys", {{"text", "hunter2"}, {"keys", JSONValue::Array{"cmd+k"}}});
    EXPECT_TRUE(hasLogged("tester: ui_keys: consent_denied after "));
    EXPECT_FALSE(hasLogged("hunter2") || hasLogged("cmd+k"));
}

TEST_F(Serve, aSocketThatCannotBeOpenedIsToldAndEndsIt) {
    fs::create_directories(mcpSocketPath());
    auto const outcome = serve().wait();
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.error, HasSubstr("Tavaro MCP: couldn't open the socket: "));
    EXPECT_TRUE(hasLogged("couldn't open the socket"));
}

TEST_F(Serve, aSignalSavesTheRecordingBeforeTheEndAndItsCallIsAnswered) {
    if (!TestDisplay::isInstalled()) GTEST_SKIP() << "no virtual display";
    TestDisplay const display(320, 200);
    setenv("DISPLAY", display.name().c_str(), 1);
    allow("tester");
    auto program = serveAndWait();
    auto answer = std::async(std::launch::async, [] {
        return called(
            "record_for",
            {{"target", JSONValue::Object{{"display", "display-1"}}}, {"seconds", 600.0}, {"countdown", 0.0}});
    });
    EXPECT_TRUE(becomesTrue([&] { return fs::exists(path("data/Tavaro/Recordings")); }));
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    program.send(SIGTERM);
    EXPECT_THAT(answer.get(), EndsWith(" s). Auto Polish has run."));
    EXPECT_EQ(program.wait().exitCode, 0);
    EXPECT_THAT(tavaro({"library"}).out, HasSubstr("Recording"));
    unsetenv("DISPLAY");
}

TEST_F(Serve, aClientIsAskedForAtTheTerminalWhileTheCallWaitsAndCtrlCStillEnds) {
    TestTerminal terminal([] { ::execl(TAVARO_PROGRAM, "tavaro", "serve", nullptr); });
    ASSERT_TRUE(becomesTrue([&] { return isServing(); }));
    std::string const asks = "Allow it? [y/N] ";
    auto answer = std::async(std::launch::async, [] { return called("status"); });
    EXPECT_THAT(terminal.shownUntil(asks), HasSubstr("tester wants to control Tavaro.\r\nIt will be able to record"));
    terminal.type("y\n");
    EXPECT_EQ(answer.get(), "Tavaro status");
    Preferences preferences;
    EXPECT_EQ(preferences.get(agentsAllowed), std::vector<std::string>{"tester"});
    MCPConsent(preferences).forget("tester");
    answer = std::async(std::launch::async, [] { return called("status"); });
    terminal.shownUntil(asks);
    terminal.type("\x03");
    EXPECT_EQ(terminal.exitCode(), 0);
    EXPECT_EQ(answer.get(), "Tavaro closed the connection mid-call.");
}

TEST_F(Serve, theSameCommandBeginsATakeInItAndSavesItAndASecondEndsTheCountdown) {
    if (!TestDisplay::isInstalled()) GTEST_SKIP() << "no virtual display";
    TestDisplay const display(320, 200);
    setenv("DISPLAY", display.name().c_str(), 1);
    auto const alone = tavaro({"record", "--toggle"});
    EXPECT_EQ(alone.exitCode, 1);
    EXPECT_THAT(alone.error, HasSubstr("Tavaro does not run"));
    EXPECT_EQ(tavaro({"record", "--toggle", "--display", "display-1"}).exitCode, 2);

    Preferences preferences;
    preferences.set(sourceChosen, "area:20,10,160,100;free;display-1");
    preferences.set(countdownChosen, 0);
    auto const program = serveAndWait();
    auto const begun = tavaro({"record", "--toggle"});
    ASSERT_EQ(begun.exitCode, 0) << begun.error;
    EXPECT_EQ(begun.error, "Recording. The same order ends the take.\n");
    auto const ended = tavaro({"record", "--toggle"});
    ASSERT_EQ(ended.exitCode, 0) << ended.error;
    EXPECT_EQ(ProjectPackage(ended.out.substr(0, ended.out.find('\n'))).load().sourceSize, (Size2{160, 100}));

    preferences.set(countdownChosen, 60);
    auto waiting = start(TAVARO_PROGRAM, {"record", "--toggle"});
    auto const second = tavaro({"record", "--toggle"});
    auto const first = waiting.wait();
    EXPECT_EQ(first.error, "Recording didn't start.\n");
    EXPECT_EQ(second.error, first.error);
    EXPECT_EQ(first.exitCode + second.exitCode, 1) << "it failed for who began it, whichever came first";
    preferences.set(sourceChosen, "display:display-9");
    EXPECT_THAT(tavaro({"record", "--toggle", "--json"}).error,
                HasSubstr("Recording didn't start. There is no display"));
    unsetenv("DISPLAY");
}

TEST_F(Serve, takesThatAreBegunByAnOrderAndWhatAKilledProgramLeftAreLookedAtForPrivateText) {
    if (!TestDisplay::isInstalled()) GTEST_SKIP() << "no virtual display";
    TestDisplay const display(320, 200);
    setenv("DISPLAY", display.name().c_str(), 1);
    auto const isLookedAt = [](fs::path const& package) {
        return !fs::exists(package / "scan.due") && ProjectPackage(package).load().redactionScan;
    };
    Preferences preferences;
    preferences.set(newTakesScanned, true);
    preferences.set(countdownChosen, 0);
    fs::path taken;
    {
        auto const program = serveAndWait();
        ASSERT_EQ(tavaro({"record", "--toggle"}).exitCode, 0);
        auto const ended = tavaro({"record", "--toggle"});
        ASSERT_EQ(ended.exitCode, 0) << ended.error;
        taken = ended.out.substr(0, ended.out.find('\n'));
        if (!becomesTrue([&] { return isLookedAt(taken) || hasLogged("was not looked at for private text"); }) ||
            !isLookedAt(taken))
            GTEST_SKIP() << "Nothing reads text here: " << read(log);
    } // killed
    auto project = ProjectPackage(taken).load();
    project.redactionScan.reset();
    ProjectPackage(taken).save(project);
    write((fs::path(taken) / "scan.due").lexically_relative(folder), "");
    auto const next = serveAndWait();
    EXPECT_TRUE(becomesTrue([&] { return isLookedAt(taken); })) << read(log);
    unsetenv("DISPLAY");
}

TEST_F(Serve, anAgentHidesWhatARecordingShows) {
    allow("tester");
    ffmpeg({"-f", "lavfi", "-i", "color=white:size=1280x720:rate=5:duration=2", "-vf",
            "drawtext=text='ada.lovelace@example.com':fontsize=36:x=300:y=320", "-pix_fmt", "yuv420p",
            path("screen.mp4")});
    auto const package = path("Movies/Tavaro/Mail.recproj");
    ASSERT_EQ(tavaro({"import", path("screen.mp4"), "-o", package}).exitCode, 0);
    auto const program = serveAndWait();
    auto const hide = [id = ProjectPackage(package).load().id.text()] {
        return called("run_action", {{"project_id", id}, {"action", "hide_secrets"}});
    };
    auto const answer = hide();
    if (answer.find("cannot be read") != answer.npos) GTEST_SKIP() << "Nothing reads text here: " << answer;
    EXPECT_EQ(answer, "The film hides 1 email, from 0:00.00 on.");
    auto const hidden = ProjectPackage(package).load();
    ASSERT_EQ(hidden.redactions->size(), 1u);
    EXPECT_TRUE(hidden.redactions->front().areaAt(1).contains({0.4, 0.47})) << "it covers the address";
    EXPECT_FALSE(hidden.redactions->front().areaAt(1).contains({0.1, 0.47})) << "and not what is beside it";
    ASSERT_EQ(tavaro({"redact", package, "--reject", "all"}).exitCode, 0);
    EXPECT_THAT(hide(), HasSubstr("No secrets were found")) << "a text that was rejected is not hidden again";
    EXPECT_FALSE(ProjectPackage(package).load().redactions->front().isEnabled);
}

TEST_F(Serve, aWindowTakesItsPlaceBetweenTwoCallsAndAfterATake) {
    if (!TestDisplay::isInstalled()) GTEST_SKIP() << "no virtual display";
    TestDisplay const display(320, 200);
    setenv("DISPLAY", display.name().c_str(), 1);
    EXPECT_FALSE(askToHandOver(controlSocketPath())) << "nobody is there";
    allow("tester");
    auto busy = serveAndWait();
    ASSERT_TRUE(becomesTrue([] { return fs::exists(controlSocketPath()); }));
    auto take = std::async(std::launch::async, [] {
        return called("record_for",
                      {{"target", JSONValue::Object{{"display", "display-1"}}}, {"seconds", 1.0}, {"countdown", 0.0}});
    });
    auto const recordings = folder / "data/Tavaro/Recordings";
    ASSERT_TRUE(becomesTrue([&] { return fs::exists(recordings) && !fs::is_empty(recordings); }));
    EXPECT_TRUE(askToHandOver(controlSocketPath()));
    EXPECT_THAT(take.get(), EndsWith(" s). Auto Polish has run."));
    EXPECT_EQ(busy.wait().exitCode, 0);
    EXPECT_FALSE(isServing());
    unsetenv("DISPLAY");
}

#ifdef TAVARO_STUDIO
TEST_F(Serve, theStudioTakesItsPlaceAndASecondStudioGoesToTheFirst) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("QT_QUICK_BACKEND", "software", 1);
    allow("tester");
    auto without = serveAndWait();
    auto studio = start(TAVARO_STUDIO, {});
    auto const ended = without.wait();
    EXPECT_EQ(ended.exitCode, 0);
    ASSERT_TRUE(becomesTrue([] { return isServing(); })) << studio.wait().error;
    EXPECT_EQ(called("status"), "Tavaro status");
    EXPECT_EQ(start(TAVARO_STUDIO, {"--record"}).wait().exitCode, 0);
    EXPECT_TRUE(studio.isRunning());
    EXPECT_EQ(serve().wait().error, "Tavaro is already running.\n");
    studio.send(SIGTERM);
    EXPECT_EQ(studio.wait().exitCode, 0);
    unsetenv("QT_QPA_PLATFORM");
    unsetenv("QT_QUICK_BACKEND");
}

TEST_F(Serve, theStudioSaysSoWhereThereIsNoDesktop) {
    for (auto const* const variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) unsetenv(variable);
    auto const ended = start(TAVARO_STUDIO, {}).wait();
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_THAT(ended.error, HasSubstr("There is no desktop here to show a window on"));
    EXPECT_EQ(ended.out, "");
}
#endif
