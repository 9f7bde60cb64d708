#include <TavaroMCP/Catalogue/MCPToolCatalog.h>
#include <TavaroMCP/Protocol/MCPSession.h>
#include <TavaroMCP/Protocol/ToolResult.h>

#include <TavaroCore/Records/JSON.h>

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace tavaro {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// A session whose calls the test answers.
class Conversation {
public:
    struct Started {
        MCPSession::ToolCall call;
        MCPSession::Progress progress;
        MCPSession::Finish finish;
    };

    /// What comes out for a line.
    std::vector<std::string> say(std::string_view line) {
        session->receive(line);
        return heard();
    }
    std::vector<std::string> heard() { return std::exchange(lines, {}); }
    std::vector<std::string> beat(double seconds) {
        now += seconds;
        session->beat();
        return heard();
    }

    std::vector<std::string> lines;
    std::vector<Started> started;
    double now = 100;
    std::optional<MCPSession> session{std::in_place,
                                      MCPSession::Surroundings{.version = "1.2",
                                                               .callTool =
                                                                   [this](auto call, auto progress, auto finish) {
                                                                       started.push_back({call, progress, finish});
                                                                   },
                                                               .write = [this](auto line) { lines.emplace_back(line); },
                                                               .now = [this] { return now; }}};
};

std::string call(int id, std::string const& more = "") {
    return R"({"id":)" + std::to_string(id) + R"(,"method":"tools/call","params":{"name":"status")" + more + "}}";
}

std::string const pong7 = R"({"id":7,"jsonrpc":"2.0","result":{}})";
std::string const withToken = R"(,"_meta":{"progressToken":"t/1"})";

}

TEST(MCPSession, introducesItselfAndRemembersWhoItTalksTo) {
    Conversation client;
    client.say(call(1));
    EXPECT_EQ(client.started.at(0).call.client, "MCP client");
    client.started[0].finish(toolResult::ok("ok"));
    client.heard();
    EXPECT_THAT(
        client.say(
            R"({"id":2,"method":"initialize","params":{"protocolVersion":"2024-01-01","clientInfo":{"name":"Ann"}}})"),
        ElementsAre(HasSubstr(R"("protocolVersion":"2025-06-18","serverInfo":{"name":"tavaro","version":"1.2"})")));
    client.say(R"({"id":3,"method":"initialize","params":{"clientInfo":{"name":""}}})");
    client.say(R"({"id":4,"method":"initialize"})");
    client.say(call(5));
    EXPECT_EQ(client.started.at(1).call.client, "Ann");
}

TEST(MCPSession, answersOrIgnoresEachKindOfLine) {
    std::string const parseError = R"({"error":{"code":-32700,"message":"Parse error"},"id":null,"jsonrpc":"2.0"})";
    auto const unknown = [](std::string const& method, std::string const& id) {
        return R"({"error":{"code":-32601,"message":"Method not found: )" + method + R"("},"id":)" + id +
               R"(,"jsonrpc":"2.0"})";
    };
    auto const nameless = [](std::string const& id) {
        return R"({"error":{"code":-32602,"message":"tools/call needs params.name"},"id":)" + id +
               R"(,"jsonrpc":"2.0"})";
    };
    std::pair<std::string, std::string> const cases[] = {
        {"", parseError},
        {"{", parseError},
        {"[]", parseError},
        {R"([{"id":1,"method":"ping"}])", parseError},
        {"\"ping\"", parseError},
        {"{\"id\":\"\xff\",\"method\":\"ping\"}", parseError},
        {std::string(200, '['), parseError},
        {R"({"id":7,"method":"ping"})", pong7},
        {"  {\"method\":\"ping\",\"id\":7,\"jsonrpc\":\"1.0\"}\r", pong7},
        {R"({"method":"notifications/initialized"})", ""},
        {R"({"id":1,"method":"notifications/initialized"})", ""},
        {R"({"method":"ping"})", ""},
        {R"({"method":"nonsense"})", ""},
        {R"({})", ""},
        {R"({"id":1,"method":"Ping"})", unknown("Ping", "1")},
        {R"({"id":1,"method":"a/\"b\""})", unknown(R"(a/\"b\")", "1")},
        {R"({"id":"a/b"})", unknown("", R"("a/b")")},
        {R"({"id":null,"method":5})", unknown("", "null")},
        {R"({"id":-9007199254740993,"method":"x"})", unknown("x", "-9007199254740993")},
        {R"({"id":{"b":[1.5,true],"a":null},"method":"x"})", unknown("x", R"({"a":null,"b":[1.5,true]})")},
        {R"({"id":1,"method":"ping","id":7,"params":5,"more":[{"id":2}]})", pong7},
        {"{\"id\":7,\"method\":\"ping\",\"params\":{\"x\":" + std::string(100, '[') + std::string(100, ']') + "}}",
         pong7},
        {R"({"id":1,"method":"tools/call"})", nameless("1")},
        {R"({"id":1,"method":"tools/call","params":[]})", nameless("1")},
        {R"({"id":1,"method":"tools/call","params":{"name":""}})", nameless("1")},
        {R"({"id":1,"method":"tools/call","params":{"name":5}})", nameless("1")},
    };
    Conversation client;
    for (auto const& [line, answer] : cases) {
        auto const expected = answer.empty() ? std::vector<std::string>{} : std::vector{answer};
        EXPECT_EQ(client.say(line), expected) << line;
    }
    EXPECT_THAT(client.started, IsEmpty());
}

TEST(MCPSession, aLineThatWasTooLongIsAnsweredByTheIdInItsBeginning) {
    std::string const refusal = R"("message":"The line is longer than the 16 MiB that are read"},)";
    std::pair<std::string, std::string> const cases[] = {
        {R"({"jsonrpc":"2.0","id":"a}","method":"tools/call","params":{"id":3,"x":"yyy)", R"("id":"a}")"},
        {R"({"id":17,"method")", R"("id":17)"},
        {R"( { "params":{"id":3}, "id" : 17 , "x":[[[)", R"("id":17)"},
        {"{\"id\":17,\"x\":\"\xe2\x82", R"("id":17)"},
        {R"({"method":"ping","id":17)", R"("id":null)"},
        {R"({"method":"ping","id":"17)", R"("id":null)"},
        {R"({"params":{"id":3,"x":")", R"("id":null)"},
        {R"([{"id":3,"x":")", R"("id":null)"},
        {"[[[[", R"("id":null)"},
        {"\"id", R"("id":null)"},
    };
    Conversation client;
    for (auto const& [beginning, id] : cases) {
        client.session->refuseTooLong(beginning);
        auto const code = id == R"("id":null)" ? "-32700" : "-32600";
        EXPECT_THAT(client.heard(), ElementsAre(testing::AllOf(HasSubstr(refusal + id), HasSubstr(code)))) << beginning;
    }
}

TEST(MCPSession, listsTheCatalogue) {
    Conversation client;
    auto const lines = client.say(R"({"id":1,"method":"tools/list","params":{"cursor":"x"}})");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(*JSONValue::parse(lines[0]).find("result"), toolCatalog::listJSON());
}

TEST(MCPSession, anUnknownToolIsAFailedCallAndNoProtocolError) {
    Conversation client;
    auto const lines = client.say(R"({"id":1,"method":"tools/call","params":{"name":"Status"}})");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(*JSONValue::parse(lines[0]).find("result"), toolResult::unknownTool("Status").json.value());
    EXPECT_THAT(lines[0], HasSubstr(R"("code":"not_found")"));
    EXPECT_THAT(client.started, IsEmpty());
}

TEST(MCPSession, anUnknownToolIsAnsweredInItsTurn) {
    Conversation client;
    client.say(call(1));
    EXPECT_THAT(client.say(R"({"id":2,"method":"tools/call","params":{"name":"nonsense"}})"), IsEmpty());
    client.started.at(0).finish(toolResult::ok("ok"));
    EXPECT_THAT(client.heard(), ElementsAre(HasSubstr(R"("id":1)"), HasSubstr(R"("code":"not_found")")));
    EXPECT_EQ(client.started.size(), 1u);
    EXPECT_FALSE(client.session->isBusy());
}

TEST(MCPSession, anyNumberOfCallsThatAreOverAtOnceGoOneBehindTheOther) {
    constexpr int count = 100'000;
    Conversation client;
    client.say(call(1));
    for (int id = 2; id <= count; ++id) {
        client.say(R"({"id":)" + std::to_string(id) + R"(,"method":"tools/call","params":{"name":"nonsense"}})");
    }
    client.started.at(0).finish(toolResult::ok("ok"));
    EXPECT_EQ(client.heard().size(), count);
}

TEST(MCPSession, oneCallRunsAtATimeAndOtherRequestsDoNotWait) {
    Conversation client;
    EXPECT_THAT(client.say(call(1, R"(,"arguments":{"limit":3})")), IsEmpty());
    EXPECT_THAT(client.say(call(2, R"(,"arguments":[1])")), IsEmpty());
    EXPECT_THAT(client.say(R"({"id":7,"method":"ping"})"), ElementsAre(pong7));
    ASSERT_EQ(client.started.size(), 1u);
    EXPECT_EQ(client.started[0].call.arguments.text(), R"({"limit":3})");
    EXPECT_TRUE(client.session->isBusy());

    client.started[0].finish(toolResult::ok("done/", JSONValue::Object{{"path", "/a/b"}}));
    EXPECT_THAT(client.heard(),
                ElementsAre(R"({"id":1,"jsonrpc":"2.0","result":{"content":[{"text":"done/","type":"text"}],)"
                            R"("isError":false,"structuredContent":{"path":"/a/b"}}})"));
    ASSERT_EQ(client.started.size(), 2u);
    EXPECT_EQ(client.started[1].call.arguments.text(), "{}") << "what is no object counts as none";
    client.started[1].finish(toolResult::failure(MCPErrorCode::busy, "Not now."));
    EXPECT_THAT(client.heard(),
                ElementsAre(R"({"id":2,"jsonrpc":"2.0","result":{"content":[{"text":"Not now.","type":"text"}],)"
                            R"("isError":true,"structuredContent":{"code":"busy","message":"Not now."}}})"));
    EXPECT_FALSE(client.session->isBusy());
}

TEST(MCPSession, whatTheClientCancelsIsStoppedAndNotAnswered) {
    auto const cancelled = [](std::string const& id, std::string const& more = "") {
        return R"({"method":"notifications/cancelled")" + more + R"(,"params":{"reason":"late","requestId":)" + id +
               "}}";
    };
    Conversation client;
    for (int id = 1; id <= 3; ++id) client.say(call(id, withToken));
    auto const isStopped = [&](std::size_t at) { return client.started.at(at).call.cancelled.stop_requested(); };
    for (auto const& line : {cancelled("4"), cancelled("\"1\""), cancelled("1", R"(,"id":9)"),
                             std::string(R"({"method":"notifications/cancelled"})")})
        EXPECT_THAT(client.say(line), IsEmpty()) << line;
    EXPECT_FALSE(isStopped(0));
    EXPECT_THAT(client.say(cancelled("2")), IsEmpty()) << "it waits for its turn";
    EXPECT_THAT(client.say(cancelled("1")), IsEmpty());
    EXPECT_TRUE(isStopped(0));
    client.heard();
    client.started[0].progress(0.5, "half");
    EXPECT_THAT(client.beat(10), ElementsAre(HasSubstr("notifications/progress"))) << "of the third only";
    EXPECT_EQ(client.started.size(), 1u) << "one call at a time, also where it is yet to stop";
    client.started[0].finish(toolResult::ok("kept"));
    EXPECT_THAT(client.heard(), IsEmpty());
    ASSERT_EQ(client.started.size(), 2u) << "the second was never begun";
    EXPECT_FALSE(isStopped(1));
    client.started[1].finish(toolResult::ok("third"));
    EXPECT_THAT(client.heard(), ElementsAre(HasSubstr(R"("id":3)")));
    EXPECT_FALSE(client.session->isBusy());
}

TEST(MCPSession, theNextCallStartsOnlyBehindTheReplyBeforeIt) {
    std::vector<std::string> events;
    std::vector<MCPSession::Finish> finishes;
    MCPSession session({.version = "1",
                        .callTool =
                            [&](auto, auto, auto finish) {
                                events.push_back("start");
                                finishes.push_back(finish);
                            },
                        .write = [&](auto) { events.push_back("write"); },
                        .now = [] { return 0.0; }});
    for (int id = 1; id <= 3; ++id) session.receive(call(id));
    for (std::size_t i = 0; i < 3; ++i) finishes.at(i)(toolResult::ok("ok"));
    EXPECT_THAT(events, ElementsAre("start", "write", "start", "write", "start", "write"));
}

TEST(MCPSession, aCallThatCannotBeStartedFailsAndLetsTheNextOneIn) {
    std::vector<std::string> lines;
    MCPSession session({.version = "1",
                        .callTool = [](auto, auto, auto) { throw std::runtime_error("There is no thread."); },
                        .write = [&](auto line) { lines.emplace_back(line); },
                        .now = [] { return 0.0; }});
    session.receive(call(1));
    session.receive(call(2));
    EXPECT_THAT(lines, ElementsAre(HasSubstr(R"("message":"There is no thread.")"), HasSubstr(R"("id":2)")));
    EXPECT_FALSE(session.isBusy());
}

TEST(MCPSession, progressGoesToWhoAskedForItUntilTheReply) {
    Conversation client;
    client.say(call(1, withToken));
    client.started[0].progress(0.25, "a/b");
    EXPECT_THAT(client.heard(),
                ElementsAre(R"({"jsonrpc":"2.0","method":"notifications/progress","params":{"message":"a/b",)"
                            R"("progress":0.25,"progressToken":"t/1","total":1}})"));
    client.started[0].finish(toolResult::ok("ok"));
    client.heard();
    client.started[0].progress(0.5, "late");
    client.started[0].finish(toolResult::ok("twice"));
    EXPECT_THAT(client.heard(), IsEmpty());

    client.say(call(2));
    client.started[1].progress(0.5, "nobody asked");
    EXPECT_THAT(client.beat(60), IsEmpty());
}

TEST(MCPSession, progressRisesBelowOneAndComesFourTimesASecondAtMost) {
    Conversation client;
    client.say(call(1, withToken));
    double const reports[] = {0, 0.3, 0.3, 0.2, 1, 7, 0.5, std::nan(""), -1, 1};
    double const begin = client.now;
    double last = -1;
    std::string message;
    std::size_t count = 0;
    for (int i = 0; i < 1000; ++i) {
        client.started[0].progress(reports[i * std::size(reports) / 1000], std::to_string(i));
        auto lines = client.heard();
        if (i % 10 == 9) lines = client.beat(0.2);
        client.now += 0.01;
        for (auto const& line : lines) {
            auto const params = *JSONValue::parse(line).find("params");
            auto const* const real = params.find<double>("progress");
            double const fraction = real ? *real : static_cast<double>(*params.find<std::int64_t>("progress"));
            EXPECT_GT(fraction, last);
            EXPECT_LT(fraction, 1);
            last = fraction;
            message = *params.find<std::string>("message");
            ++count;
        }
    }
    EXPECT_GT(last, 0.99);
    EXPECT_LE(static_cast<double>(count), (client.now - begin) / 0.25);
    EXPECT_GE(static_cast<double>(count), client.now - begin);
    EXPECT_GT(std::stoi(message), 970) << "the newest is sent";
}

TEST(MCPSession, noCallIsSilentForLongerThanASecond) {
    constexpr double beat = 0.25;
    Conversation client;
    client.say(call(1, withToken));
    client.say(call(2, R"(,"_meta":{"progressToken":2})"));
    client.started[0].progress(0.5, "half");
    client.heard();
    double silence = 0, fraction = 0.5;
    for (int i = 0; i < 40; ++i) {
        silence += beat;
        for (auto const& line : client.beat(beat)) {
            auto const message = JSONValue::parse(line);
            auto const& params = *message.find("params");
            if (!params.find<std::string>("progressToken")) continue; // the one that waits is heard too
            EXPECT_EQ(*params.find<std::string>("message"), "half");
            double const now = *params.find<double>("progress");
            EXPECT_GT(now, fraction) << "the protocol wants it to grow";
            fraction = now;
            silence = 0;
        }
        EXPECT_LT(silence, 1);
    }
    EXPECT_NEAR(fraction, 0.5, 0.001) << "nothing moved";
    client.beat(beat);
    EXPECT_THAT(client.beat(1), ElementsAre(HasSubstr("t/1"), HasSubstr("Waiting for the call before it.")));
}

TEST(MCPSession, aResultThatNoClientCanReadBecomesAFailure) {
    auto const lineOf = [](std::size_t length) {
        Conversation client;
        client.say(call(1));
        client.started[0].finish(toolResult::ok(std::string(length, 'x')));
        return client.heard().at(0);
    };
    auto const around = lineOf(0).size();
    EXPECT_EQ(lineOf(MCPSession::longestResult - 1 - around).size(), MCPSession::longestResult - 1);
    EXPECT_THAT(lineOf(MCPSession::longestResult - around), HasSubstr(R"("isError":true)"));
}

TEST(MCPSession, aCallMayOutliveItsSession) {
    Conversation client;
    client.say(call(1, withToken));
    client.session.reset();
    client.started[0].progress(0.5, "nobody there");
    client.started[0].finish(toolResult::ok("ok"));
    EXPECT_THAT(client.heard(), IsEmpty());
}

TEST(ToolResult, anImageComesWithItsCaption) {
    EXPECT_EQ(
        toolResult::image(Data{{0x89, 'P', 'N', 'G'}}, "At 3 s").json.text(),
        R"({"content":[{"data":"iVBORw==","mimeType":"image/png","type":"image"},{"text":"At 3 s","type":"text"}],)"
        R"("isError":false})");
}

}
