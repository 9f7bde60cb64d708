#include "../Core/Package/TemporaryFolder.h"

#include <Tavaro/Agents/AppMCPBackend.h>
#include <Tavaro/Model/Application/Application.h>

#include <TavaroMCP/Bridge/BridgeCaller.h>
#include <TavaroMCP/Bridge/BridgeMessages.h>
#include <TavaroPlatform/Sockets/UnixSocket.h>

#include <gtest/gtest.h>

#include <future>
#include <optional>

using namespace tavaro;

namespace {

class AppMCPBackendTest : public testing::Test {
protected:
    AppMCPBackendTest() {
        agents.emplace(queue, application,
                       AppMCPBackend::Settings{.version = "1.2",
                                               .ask =
                                                   [this](auto const&, auto answer) {
                                                       answers.push_back(answer);
                                                       return MCPConsent::Withdraw();
                                                   },
                                               .socket = socket});
    }

    std::future<std::string> calling(std::string const& tool, std::string const& client = "tester",
                                     JSONText const& arguments = JSONValue::Object{}) {
        return std::async(std::launch::async, [this, tool, client, arguments] {
            auto const result =
                BridgeCaller({.socket = socket, .command = {}}).call({tool, arguments, client}, [](auto, auto const&) {
                });
            return *result.value().find<JSONValue::Array>("content")->back().find<std::string>("text");
        });
    }
    void runUntil(std::function<bool()> const& isDone) {
        auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        queue.runUntil([&] { return isDone() || std::chrono::steady_clock::now() > deadline; });
        ASSERT_TRUE(isDone());
    }
    std::string answered(std::future<std::string> call) {
        runUntil([&] { return call.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
        return call.get();
    }

    TemporaryFolder const folder;
    std::filesystem::path const socket = folder / "mcp.sock";
    MainQueue queue;
    Application application{queue,
                            {.library = {folder / "Movies"},
                             .index = folder / "cache/library.json",
                             .preferences = folder / "config/preferences.json"}};
    std::vector<std::function<void(std::optional<bool>)>> answers; // the user's, not yet given
    std::optional<AppMCPBackend> agents;
};

}

TEST_F(AppMCPBackendTest, callsWaitForTheUsersWordAndThenForTheTool) {
    auto first = calling("status"), second = calling("list_export_presets");
    runUntil([&] { return !answers.empty() && agents->connections() == 2; });
    answers[0](true);
    EXPECT_EQ(answered(std::move(first)), "Tavaro status");
    EXPECT_NE(answered(std::move(second)).find("export presets"), std::string::npos);
    EXPECT_EQ(answers.size(), 1u);
    EXPECT_EQ(answered(calling("no_such")).find("isn't allowed"), std::string::npos);
}

TEST_F(AppMCPBackendTest, aClientThatLeavesWhileTheUserThinksStartsNothing) {
    auto client = UnixSocket::connect(socket);
    auto const line = bridgeLine(BridgeRequest{.id = 1,
                                               .client = "tester",
                                               .tool = "edit_project",
                                               .arguments = JSONValue::Object{{"project_id", UUID::random().text()}}});
    ASSERT_TRUE(client->sendAll(line, UnixSocket::forever));
    runUntil([&] { return !answers.empty(); });
    client.reset();
    runUntil([&] { return agents->connections() == 0; });
    queue.runPending();
    answers[0](true);
    EXPECT_EQ(answered(calling("status")), "Tavaro status");
}

TEST_F(AppMCPBackendTest, argumentsAreReadOfAClientThatMayAndOnlyInTheirLimits) {
    std::string zeros = "0"; // two million and more of them, which are 8 MiB of text and far more as values
    while (zeros.size() < 8u << 20) zeros += ",0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0";
    auto const many = JSONText::written("{\"x\":[" + zeros + "]}");
    auto const deep = JSONText::written("{\"x\":" + std::string(100, '[') + std::string(100, ']') + "}");
    auto refused = calling("status", "stranger", many);
    runUntil([&] { return answers.size() == 1; });
    answers[0](false);
    EXPECT_NE(answered(std::move(refused)).find("isn't allowed"), std::string::npos);
    auto first = calling("status");
    runUntil([&] { return answers.size() == 2; });
    answers[1](true);
    EXPECT_EQ(answered(std::move(first)), "Tavaro status");
    EXPECT_NE(answered(calling("status", "tester", many)).find("too many values"), std::string::npos);
    EXPECT_NE(answered(calling("status", "tester", deep)).find("nested too deeply"), std::string::npos);
    EXPECT_EQ(answered(calling("status")), "Tavaro status");
}

TEST_F(AppMCPBackendTest, whatHasNoResultAtTheEndIsInterruptedAndNothingIsBegunAfter) {
    auto const interrupted = "Tavaro closed the connection mid-call.";
    auto waiting = calling("status");
    runUntil([&] { return !answers.empty(); });
    agents->beginToEnd();
    EXPECT_EQ(answered(calling("status", "other")), interrupted);
    EXPECT_EQ(answers.size(), 1u);
    agents.reset();
    EXPECT_EQ(waiting.get(), interrupted);
    EXPECT_FALSE(std::filesystem::exists(socket));
}
