#include <TavaroMCP/Bridge/BridgeCaller.h>
#include <TavaroMCP/Bridge/BridgeMessages.h>
#include <TavaroMCP/Bridge/BridgeServer.h>
#include <TavaroMCP/Protocol/ToolResult.h>

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroCore/Records/JSONError.h>
#include <TavaroPlatform/Sockets/LineReader.h>
#include <TavaroPlatform/Sockets/UnixSocketListener.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <vector>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::milliseconds patience(5000);
constexpr BridgeLimits limits{.lineBytes = 1000, .lineTime = std::chrono::milliseconds(200), .connections = 8};

/// Answers as the test says.
struct FakeApplication final : BridgeApplication {
    std::function<ToolResult(BridgeRequest const&, BridgeClient&)> answering = [](BridgeRequest const& request, auto&) {
        return toolResult::ok(request.client + " " + request.tool, request.arguments);
    };
    ToolResult answer(BridgeRequest request, BridgeClient& client) override { return answering(request, client); }
};

class BridgeTest : public ::testing::Test {
protected:
    BridgeTest() {
        std::string pattern = (fs::temp_directory_path() / "tavaro-bridge-XXXXXX").string();
        root = mkdtemp(pattern.data());
        path = root / "Tavaro/mcp.sock";
    }
    ~BridgeTest() override { fs::remove_all(root); }

    void serve(BridgeLimits limits = {}) { server.emplace(path, application, limits); }

    JSONText call(BridgeCaller::Progress const& progress = [](double, std::string const&) {}) const {
        return BridgeCaller({.socket = path, .command = {}})
            .call({"status", JSONValue::Object{{"n", 1}}, "Ann"}, progress);
    }
    JSONText callStarting(std::vector<std::string> command, std::chrono::milliseconds timeToStart) const {
        return BridgeCaller({.socket = path, .command = std::move(command), .timeToStart = timeToStart})
            .call({"status", JSONValue::Object{}, "Ann"}, [](double, std::string const&) {});
    }
    static std::string codeOf(JSONText const& text) {
        auto const result = text.value();
        auto const* const failure = result.find("structuredContent");
        auto const* const code = failure ? failure->find<std::string>("code") : nullptr;
        return code ? *code : "none";
    }
    static bool becomesTrue(std::function<bool()> const& condition) {
        for (int i = 0; i < 500; ++i) {
            if (condition()) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }

    fs::path root, path;
    FakeApplication application;
    std::optional<BridgeServer> server;
};

/// An application that answers one request with these bytes, and closes the connection.
std::future<void> answering(UnixSocketListener const& listener, std::string bytes) {
    return std::async(std::launch::async, [&listener, bytes = std::move(bytes)] {
        pollfd waiting{listener.descriptor(), POLLIN, 0};
        ::poll(&waiting, 1, static_cast<int>(patience.count()));
        auto const socket = listener.accept().value();
        LineReader lines(socket, longestBridgeLine);
        ASSERT_TRUE(lines.next(patience));
        socket.sendAll(bytes, patience);
    });
}

}

TEST_F(BridgeTest, aCallArrivesWithItsProgressFirstAndItsResultLast) {
    application.answering = [](BridgeRequest const& request, BridgeClient& client) {
        client.progress(0.5, "half/way");
        client.progress(-1, "all");
        EXPECT_TRUE(client.isConnected());
        return toolResult::ok(request.client + " " + request.tool, request.arguments);
    };
    serve();
    std::vector<std::pair<double, std::string>> heard;
    auto const result = call([&](double fraction, auto const& message) { heard.emplace_back(fraction, message); });
    EXPECT_EQ(result, toolResult::ok("Ann status", JSONValue::Object{{"n", 1}}));
    EXPECT_EQ(heard, (std::vector<std::pair<double, std::string>>{{0.5, "half/way"}, {0, "all"}}));
    EXPECT_TRUE(becomesTrue([&] { return server->connections() == 0; }));
}

TEST_F(BridgeTest, requestsThatComeTogetherAreAnsweredInTurnAtOnce) {
    serve({.lineTime = 2 * patience});
    auto const client = UnixSocket::connect(path).value();
    BridgeRequest const first{.id = 1, .client = "Ann", .tool = "status"},
        second{.id = 2, .client = "Ann", .tool = "t"};
    ASSERT_TRUE(client.sendAll(bridgeLine(first) + bridgeLine(second), patience));
    LineReader lines(client, longestBridgeLine);
    EXPECT_EQ(replyOf(lines.next(patience).value()).id, 1);
    EXPECT_EQ(replyOf(lines.next(patience).value_or("")).id, 2);
}

TEST_F(BridgeTest, whatTheApplicationThrowsIsAFailure) {
    serve();
    application.answering = [](auto&, auto&) -> ToolResult { throw MCPToolError(MCPErrorCode::busy, "Not now."); };
    EXPECT_EQ(call(), toolResult::failure(MCPErrorCode::busy, "Not now."));
    application.answering = [](auto&, auto&) -> ToolResult { throw std::runtime_error("It broke."); };
    EXPECT_EQ(call(), toolResult::failure(MCPErrorCode::failed, "It broke."));
}

TEST_F(BridgeTest, largeArgumentsAndResultsGoThroughWhole) {
    std::string const large(5 << 20, 'x');
    serve();
    auto const result =
        BridgeCaller({.socket = path, .command = {}})
            .call({"status", JSONValue::Object{{"patch", large}}, "Ann"}, [](double, std::string const&) {});
    EXPECT_EQ(result, toolResult::ok("Ann status", JSONValue::Object{{"patch", large}}));
}

TEST_F(BridgeTest, manyAreAnsweredAtTheSameTime) {
    constexpr int count = 50;
    std::atomic<int> inside = 0;
    application.answering = [&](auto&, auto&) {
        ++inside;
        return toolResult::ok(becomesTrue([&] { return inside == count; }) ? "together" : "alone");
    };
    serve();
    std::vector<std::future<JSONText>> results;
    for (int i = 0; i < count; ++i) results.push_back(std::async(std::launch::async, [&] { return call(); }));
    for (auto& result : results) EXPECT_EQ(result.get(), toolResult::ok("together"));
}

TEST_F(BridgeTest, moreThanFitWaitForTheirTurn) {
    serve({.connections = 1});
    std::vector<std::future<JSONText>> results;
    for (int i = 0; i < 10; ++i) results.push_back(std::async(std::launch::async, [&] { return call(); }));
    for (auto& result : results) EXPECT_EQ(codeOf(result.get()), "none");
}

TEST_F(BridgeTest, whoSaysNothingInAFullHouseMakesRoom) {
    constexpr std::chrono::milliseconds silence(100);
    serve({.lineTime = 2 * patience, .connections = 3, .silence = silence});
    std::vector<UnixSocket> silent;
    auto const enter = [&] { silent.push_back(UnixSocket::connect(path).value()); };
    auto const isThere = [](UnixSocket const& client) { return client.isConnected(); };
    enter(), enter();
    std::this_thread::sleep_for(2 * silence);
    EXPECT_TRUE(std::ranges::all_of(silent, isThere)) << "there is room";
    enter(), enter();
    auto const begun = std::chrono::steady_clock::now();
    EXPECT_EQ(codeOf(call()), "none");
    EXPECT_LT(std::chrono::steady_clock::now() - begun, patience);
    EXPECT_FALSE(std::ranges::all_of(silent, isThere));
}

TEST_F(BridgeTest, aClientThatDoesWrongLosesItsConnectionAndNobodyElseDoes) {
    serve(limits);
    std::string const tooLong(limits.lineBytes + 1, ' ');
    for (auto const& bytes :
         {std::string(R"({"id":1,"tool":"sta)"), tooLong, std::string("nonsense\n"), std::string("{}\n"),
          std::string("[1]\n"), std::string(R"({"id":1,"client":"Ann","tool":"status","arguments":[]})") + "\n",
          std::string()}) {
        auto const bad = UnixSocket::connect(path).value();
        ASSERT_TRUE(bad.sendAll(bytes, patience));
        EXPECT_EQ(codeOf(call()), "none") << bytes;
        std::vector<char> room(10);
        EXPECT_EQ(bad.receive(room, patience).what, UnixSocket::Received::end) << bytes;
    }
    EXPECT_TRUE(becomesTrue([&] { return server->connections() == 0; }));
}

TEST_F(BridgeTest, aClientThatDoesNotReadHoldsNeitherTheToolNorTheOthers) {
    serve({.lineTime = limits.lineTime});
    std::atomic<int> answered = 0;
    application.answering = [&](BridgeRequest const& request, BridgeClient& client) {
        for (int i = 0; i < 20'000; ++i) client.progress(0.5, "far more than a socket keeps");
        ++answered;
        return toolResult::ok(request.client);
    };
    auto const deaf = UnixSocket::connect(path).value();
    ASSERT_TRUE(deaf.sendAll(bridgeLine(BridgeRequest{.id = 1, .client = "deaf", .tool = "export"}), patience));
    EXPECT_TRUE(becomesTrue([&] { return answered == 1; }));
    EXPECT_EQ(call(), toolResult::ok("Ann"));
    EXPECT_TRUE(becomesTrue([&] { return server->connections() == 0; }));
}

TEST_F(BridgeTest, aClientThatSendsNoMoreStillGetsItsAnswer) {
    application.answering = [](auto&, BridgeClient& client) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50)); // for what it sees of its client
        return toolResult::ok(client.isConnected() ? "here" : "gone");
    };
    serve();
    int const descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    UnixSocket const client{FileDescriptor(descriptor)};
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    path.native().copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ASSERT_TRUE(client.sendAll(bridgeLine(BridgeRequest{.id = 1, .client = "Ann", .tool = "status"}), patience));
    ::shutdown(descriptor, SHUT_WR);
    LineReader lines(client, longestBridgeLine);
    EXPECT_EQ(replyOf(lines.next(patience).value()).result, toolResult::ok("here").json);
    EXPECT_FALSE(lines.next(patience));
    EXPECT_TRUE(lines.hasEnded());
}

TEST_F(BridgeTest, theApplicationSeesThatItsClientIsGoneAndTheServerEndsWithIt) {
    std::atomic<int> begun = 0, gone = 0;
    application.answering = [&](auto&, BridgeClient& client) {
        ++begun;
        if (becomesTrue([&] { return !client.isConnected(); })) ++gone;
        return toolResult::ok("for nobody");
    };
    serve();
    auto const begin = [&](int number) {
        auto client = UnixSocket::connect(path);
        EXPECT_TRUE(
            client->sendAll(bridgeLine(BridgeRequest{.id = 1, .client = "Ann", .tool = "record_for"}), patience));
        EXPECT_TRUE(becomesTrue([&] { return begun == number; }));
        return client;
    };
    auto client = begin(1);
    client.reset();
    EXPECT_TRUE(becomesTrue([&] { return gone == 1; }));

    client = begin(2);
    server.reset();
    EXPECT_EQ(gone, 2);
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(BridgeTest, whatIsAnsweredAtTheEndStillArrivesAndAClientWithNothingUnderWayHoldsNobody) {
    std::atomic<int> begun = 0;
    application.answering = [&](BridgeRequest const&, BridgeClient& client) {
        ++begun;
        while (client.isConnected()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
        return toolResult::ok(std::string(1 << 20, 'x'));
    };
    serve();
    auto const idle = UnixSocket::connect(path);
    auto answer = std::async(std::launch::async, [this] { return call(); });
    ASSERT_TRUE(becomesTrue([&] { return begun == 1; }));
    auto const start = std::chrono::steady_clock::now();
    server.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, BridgeLimits().lastWords);
    EXPECT_EQ(codeOf(answer.get()), "none");
}

TEST_F(BridgeTest, anApplicationThatEndsMidCallIsSaidSo) {
    UnixSocketListener const listener(path);
    auto const interrupted = toolResult::failure(MCPErrorCode::interrupted, "Tavaro closed the connection mid-call.");
    for (std::string const bytes : {"", "{\"id\":1,\"progress\":0.5}\n", R"({"id":1,"result":{)"}) {
        auto const ended = answering(listener, bytes);
        EXPECT_EQ(call(), interrupted) << bytes;
    }
    std::pair<std::string, std::string> const refused[] = {
        {"{\"result\":{}}\n", "Bridge reply without id."},
        {"{\"id\":1}\n", "Bridge reply without result."},
        {"nonsense\n", "Bridge reply that cannot be read: expected an object, found a single value."},
    };
    for (auto const& [bytes, sentence] : refused) {
        auto const ended = answering(listener, bytes);
        EXPECT_EQ(call(), toolResult::failure(MCPErrorCode::failed, sentence));
    }
    auto const ended = answering(listener, "{\"id\":2,\"result\":{}}\n{\"result\":{\"a\":1},\"id\":1}\n");
    EXPECT_EQ(call(), JSONText(JSONValue::Object{{"a", 1}})) << "the other id was not asked for";
}

TEST_F(BridgeTest, theFirstCallStartsTheApplication) {
    auto const mark = root / "started";
    auto const application = std::async(std::launch::async, [&] {
        if (becomesTrue([&] { return fs::exists(mark); })) serve();
    });
    auto const result = callStarting({"/bin/sh", "-c", "touch " + mark.string() + "; sleep 5"}, patience);
    EXPECT_EQ(codeOf(result), "none");
}

TEST_F(BridgeTest, anApplicationThatGivesWayToAnotherIsNoFailure) {
    auto const mark = root / "started";
    auto const application = std::async(std::launch::async, [&] {
        if (!becomesTrue([&] { return fs::exists(mark); })) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(700)); // the caller has found no socket by then
        serve();
    });
    auto const result = callStarting({"/bin/sh", "-c", "touch " + mark.string() + "; exit 1"}, 2 * patience);
    EXPECT_EQ(codeOf(result), "none");
}

TEST_F(BridgeTest, anApplicationThatDoesNotComeIsUnreachable) {
    auto const unreachable =
        toolResult::failure(MCPErrorCode::appUnreachable,
                            "Couldn't reach Tavaro. Make sure it is installed in /Applications and opens normally.");
    EXPECT_EQ(call(), unreachable) << "nothing is installed";
    auto const began = std::chrono::steady_clock::now();
    EXPECT_EQ(callStarting({"/bin/false"}, 2 * patience), unreachable);
    EXPECT_LT(std::chrono::steady_clock::now() - began, patience) << "what has failed is not waited for as long";
    EXPECT_EQ(callStarting({"/bin/sleep", "2"}, std::chrono::milliseconds(400)), unreachable);
    path = root / std::string(104, 's');
    EXPECT_EQ(call(), toolResult::failure(MCPErrorCode::appUnreachable, "Socket path is too long."));
}

TEST(BridgeMessages, keysComeInAnyOrderAndGoOutSorted) {
    EXPECT_EQ(bridgeLine(BridgeRequest{.id = 3, .client = "a/b", .tool = "status"}),
              "{\"arguments\":{},\"client\":\"a/b\",\"id\":3,\"tool\":\"status\"}\n");
    EXPECT_EQ(bridgeLine(BridgeReply{.id = 3, .progress = 0.5, .message = "m"}),
              "{\"id\":3,\"message\":\"m\",\"progress\":0.5}\n");
    EXPECT_EQ(requestOf(R"({"tool":"status","id":3,"arguments":{"n":9007199254740993},"client":"c","new":1})"),
              (BridgeRequest{3, "c", "status", JSONValue::Object{{"n", 9007199254740993}}}));
}

TEST(BridgeMessages, aRequestThatLacksSomethingIsNone) {
    auto const refusal = [](std::string_view line) -> std::string {
        try {
            requestOf(line);
            return "none";
        } catch (JSONError const& error) {
            return error.what();
        }
    };
    EXPECT_EQ(refusal(R"({"id":3,"client":"c","tool":"t"})"), "none");
    EXPECT_EQ(refusal(R"({"client":"c","tool":"t"})"), "Bridge request without id.");
    EXPECT_EQ(refusal(R"({"id":3,"tool":"t"})"), "Bridge request without client.");
    EXPECT_EQ(refusal(R"({"id":3,"client":"c"})"), "Bridge request without tool.");
    EXPECT_EQ(refusal(R"({"id":3,"client":"c","tool":"t","arguments":[{}]})"), "Bridge request without arguments.");
}

}
