#include <TavaroMCP/Bridge/BridgeMessages.h>
#include <TavaroMCP/Bridge/BridgeServer.h>
#include <TavaroMCP/Protocol/ToolResult.h>

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroPlatform/Sockets/LineSplitter.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <poll.h>
#include <span>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds patience(10'000);

/// The real program with a pipe to its input and one from its output.
class ServerProcess {
public:
    explicit ServerProcess(fs::path const& program = TAVARO_MCP) {
        int input[2], output[2];
        if (pipe2(input, O_CLOEXEC) != 0 || pipe2(output, O_CLOEXEC) != 0) throw std::runtime_error("no pipes");
        process_ = fork();
        if (process_ == 0) {
            dup2(input[0], STDIN_FILENO);
            dup2(output[1], STDOUT_FILENO);
            execl(program.c_str(), "tavaro-mcp", nullptr);
            _exit(127);
        }
        close(input[0]);
        close(output[1]);
        toInput_ = FileDescriptor(input[1]);
        fromOutput_ = FileDescriptor(output[0]);
    }
    ~ServerProcess() {
        if (process_ == 0) return;
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    ServerProcess(ServerProcess const&) = delete;
    ServerProcess& operator=(ServerProcess const&) = delete;

    void say(std::string const& line) { sayBytes(line + "\n"); }
    void sayBytes(std::string const& bytes) { ASSERT_EQ(toInput_.write(std::as_bytes(std::span(bytes))), 0); }
    std::string hear() {
        std::vector<char> room(1 << 16);
        while (true) {
            if (auto const line = lines_.next()) return std::string(*line);
            pollfd waiting{fromOutput_.get(), POLLIN, 0};
            if (poll(&waiting, 1, static_cast<int>(patience.count())) <= 0) return "nothing came";
            auto const count = read(fromOutput_.get(), room.data(), room.size());
            if (count <= 0) return "it ended";
            lines_.feed({room.data(), static_cast<std::size_t>(count)});
        }
    }
    void endInput() { toInput_.close(); }
    void send(int signal) const { kill(process_, signal); }
    /// The most memory that it has had, in MiB.
    std::size_t peakMemory() const {
        std::ifstream status("/proc/" + std::to_string(process_) + "/status");
        std::string word;
        std::size_t kilobytes = 0;
        while (status >> word)
            if (word == "VmHWM:") status >> kilobytes;
        return kilobytes >> 10;
    }
    /// Its exit code, 128 and more for a signal; none where it runs for longer.
    std::optional<int> endsWithin(std::chrono::milliseconds time) {
        auto const deadline = Clock::now() + time;
        while (Clock::now() < deadline) {
            int status = 0;
            if (waitpid(process_, &status, WNOHANG) == process_) {
                process_ = 0;
                return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return std::nullopt;
    }

private:
    pid_t process_ = 0;
    FileDescriptor toInput_, fromOutput_;
    LineSplitter lines_{longestBridgeLine};
};

/// An application whose calls take until it is let go, or their client is gone.
struct SlowApplication final : BridgeApplication {
    std::atomic<bool> mayAnswer = false;
    std::atomic<bool> isStuck = false; // it does not see that the client is gone
    std::atomic<int> begun = 0, abandoned = 0;

    ToolResult answer(BridgeRequest request, BridgeClient& client) override {
        ++begun;
        while (!mayAnswer && client.isConnected()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
        while (isStuck) std::this_thread::sleep_for(std::chrono::milliseconds(5));
        if (!mayAnswer) ++abandoned;
        return toolResult::ok(request.client + " " + request.tool);
    }
};

class ServerProgram : public ::testing::Test {
protected:
    ServerProgram() {
        std::string pattern = (fs::temp_directory_path() / "tavaro-mcp-XXXXXX").string();
        folder = mkdtemp(pattern.data());
        setenv("XDG_DATA_HOME", folder.c_str(), 1);
        bridge.emplace(folder / "Tavaro/mcp.sock", application,
                       BridgeLimits{.lastWords = std::chrono::milliseconds(0)});
    }
    ~ServerProgram() override {
        bridge.reset();
        fs::remove_all(folder);
    }

    static bool becomesTrue(auto const& condition) {
        for (int i = 0; i < 1000; ++i) {
            if (condition()) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return false;
    }
    void beginCall(ServerProcess& server) {
        server.say(R"({"id":1,"method":"tools/call","params":{"name":"status","_meta":{"progressToken":5}}})");
        ASSERT_TRUE(becomesTrue([&] { return application.begun == 1; }));
    }

    fs::path folder;
    SlowApplication application;
    std::optional<BridgeServer> bridge;
};

std::string const ping = R"({"id":7,"method":"ping"})";
std::string const pong = R"({"id":7,"jsonrpc":"2.0","result":{}})";

}

TEST_F(ServerProgram, aCallGoesToTheApplicationWhileOtherRequestsAreAnswered) {
    ServerProcess server;
    server.say(R"({"id":0,"method":"initialize","params":{"clientInfo":{"name":"Ann"}}})");
    EXPECT_THAT(server.hear(), HasSubstr(R"("name":"tavaro")"));
    beginCall(server);
    server.say(ping);
    EXPECT_EQ(server.hear(), pong);
    for (int i = 0; i < 3; ++i) {
        auto const before = Clock::now();
        EXPECT_THAT(server.hear(), HasSubstr(R"("progressToken":5)"));
        EXPECT_LT(Clock::now() - before, std::chrono::milliseconds(1500)) << "a second, and what a busy machine adds";
    }
    application.mayAnswer = true;
    std::string line;
    while ((line = server.hear()).find("progressToken") != line.npos) {
    }
    EXPECT_THAT(line, HasSubstr(R"({"text":"Ann status","type":"text"})"));
    server.endInput();
    EXPECT_EQ(server.endsWithin(std::chrono::seconds(1)), 0);
}

TEST_F(ServerProgram, endsWithinASecondOfItsInputOrATerminationAlsoInACall) {
    for (bool const isSignalled : {false, true}) {
        application.begun = application.abandoned = 0;
        ServerProcess server;
        beginCall(server);
        isSignalled ? server.send(SIGTERM) : server.endInput();
        EXPECT_EQ(server.endsWithin(std::chrono::seconds(1)), isSignalled ? 128 + SIGTERM : 0);
        EXPECT_TRUE(becomesTrue([&] { return application.abandoned == 1; }));
    }
}

TEST_F(ServerProgram, theApplicationSeesThatACallIsCancelledAndTheNextOneIsAnswered) {
    ServerProcess server;
    beginCall(server);
    server.say(R"({"method":"notifications/cancelled","params":{"requestId":1}})");
    EXPECT_TRUE(becomesTrue([&] { return application.abandoned == 1; }));
    application.mayAnswer = true;
    server.say(R"({"id":2,"method":"tools/call","params":{"name":"status"}})");
    EXPECT_THAT(server.hear(), AllOf(HasSubstr(R"("id":2)"), HasSubstr("status")));
}

TEST_F(ServerProgram, aQuickCallIsStillAnsweredWhenTheInputEndsBehindIt) {
    application.mayAnswer = true;
    ServerProcess server;
    server.sayBytes(R"({"id":1,"method":"tools/call","params":{"name":"status"}})");
    server.endInput();
    EXPECT_THAT(server.hear(), HasSubstr("MCP client status"));
    EXPECT_EQ(server.endsWithin(std::chrono::seconds(1)), 0);
}

TEST_F(ServerProgram, aClientThatDoesNotReadDoesNotKeepItRunning) {
    ServerProcess server;
    std::string lists;
    for (int i = 0; i < 100; ++i)
        lists += R"({"id":1,"method":"tools/list"})"
                 "\n"; // a megabyte and more to answer
    server.sayBytes(lists);
    server.endInput();
    EXPECT_EQ(server.endsWithin(std::chrono::seconds(1)), 0);
}

TEST_F(ServerProgram, aLineOfAnyLengthCostsOneAnswer) {
    ServerProcess server;
    std::string const piece(1 << 20, '[');
    for (int i = 0; i < 40; ++i) server.sayBytes(piece);
    server.say("");
    server.say(ping);
    EXPECT_THAT(server.hear(), HasSubstr("-32700"));
    EXPECT_EQ(server.hear(), pong);
    server.say(R"({"id":5,"method":"ping","params":{"x":")" + std::string(17 << 20, 'x') + "\"}}");
    server.say(ping);
    EXPECT_THAT(server.hear(), HasSubstr(R"("id":5)"));
    EXPECT_EQ(server.hear(), pong);
}

TEST_F(ServerProgram, aLineCostsItsLengthAFewTimesAndNoTreeOfWhatItHolds) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "The sanitizer's own memory counts, too.";
#endif
    application.mayAnswer = true;
    ServerProcess server;
    std::string zeros = "0"; // 12 MiB of them
    while (zeros.size() < 12u << 20) zeros += ",0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0";
    server.say(R"({"id":7,"method":"ping","params":{"x":[)" + zeros + "]}}");
    EXPECT_EQ(server.hear(), pong);
    server.say(R"({"id":1,"method":"tools/call","params":{"name":"status","arguments":{"x":[)" + zeros + "]}}}");
    EXPECT_THAT(server.hear(), HasSubstr("MCP client status"));
    EXPECT_LT(server.peakMemory(), 150);
}

TEST_F(ServerProgram, whenTheApplicationGoesMidCallTheServerSaysSoAndGoesOn) {
    ServerProcess server;
    beginCall(server);
    application.isStuck = true; // or it would have the time to answer
    std::thread going([&] { bridge.reset(); });
    std::string line;
    while ((line = server.hear()).find("progressToken") != line.npos) {
    }
    application.isStuck = false;
    going.join();
    EXPECT_THAT(line, HasSubstr(R"("code":"interrupted")"));
    server.say(ping);
    EXPECT_EQ(server.hear(), pong);
}

/// The server looks beside itself for the application. This one ends long after the call.
TEST_F(ServerProgram, anApplicationThatItStartedAndThatHasEndedLeavesNothingBehind) {
    bridge.reset();
    application.mayAnswer = true;
    auto const mark = folder / "started";
    fs::copy_file(TAVARO_MCP, folder / "tavaro-mcp");
    std::ofstream(folder / "tavaro") << "#!/bin/sh\necho $$ > " << mark.string() << ".new; mv " << mark.string()
                                     << ".new " << mark.string() << "; exec sleep 2\n";
    fs::permissions(folder / "tavaro", fs::perms::owner_all);
    ServerProcess server(folder / "tavaro-mcp");
    server.say(R"({"id":1,"method":"tools/call","params":{"name":"status"}})");
    ASSERT_TRUE(becomesTrue([&] { return fs::exists(mark); }));
    bridge.emplace(folder / "Tavaro/mcp.sock", application);
    EXPECT_THAT(server.hear(), HasSubstr("MCP client status"));
    pid_t process = 0;
    std::ifstream(mark) >> process;
    ASSERT_EQ(kill(process, 0), 0);
    EXPECT_TRUE(becomesTrue([&] { return kill(process, 0) != 0; })) << "it would stay until the server ends";
}

}
