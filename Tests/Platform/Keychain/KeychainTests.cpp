#include "../../Capture/TestBus.h"

#include <TavaroPlatform/Keychain/Keychain.h>
#include <TavaroPlatform/Keychain/KeychainError.h>
#include <TavaroPlatform/Processes/ConnectedProcess.h>
#include <TavaroPlatform/Processes/DetachedProcess.h>
#include <TavaroPlatform/Processes/ProgramRun.h>
#include <TavaroPlatform/Sockets/LineReader.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using ::testing::HasSubstr;
using Kind = KeychainError::Kind;

constexpr auto service = "com.tavaro.test";

std::string contents(std::string const& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

/// What the system does with the mapping that has the address: "VmFlags: rd wr …".
std::string flagsOfPage(std::uintptr_t address) {
    std::istringstream lines(contents("/proc/self/smaps"));
    bool isHere = false;
    for (std::string line; std::getline(lines, line);) {
        unsigned long begin = 0, end = 0;
        if (std::sscanf(line.c_str(), "%lx-%lx ", &begin, &end) == 2) isHere = begin <= address && address < end;
        if (isHere && line.starts_with("VmFlags:")) return line + " ";
    }
    return {};
}

/// A bus and folders of its own, and on it the desktop's keychain where a test starts it.
class KeychainOnBus : public ::testing::Test {
protected:
    KeychainOnBus() {
        auto pattern = (fs::temp_directory_path() / "tavaro-keychain-XXXXXX").string();
        folder = ::mkdtemp(pattern.data());
        ::setenv("HOME", folder.c_str(), 1);
        ::setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
        ::setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
        ::setenv("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str(), 1);
        ::unsetenv("DISPLAY");
        ::unsetenv("WAYLAND_DISPLAY");
    }
    ~KeychainOnBus() override {
        if (daemon) daemon->kill();
        daemon.reset();
        ::unsetenv("DBUS_SESSION_BUS_ADDRESS");
        ::unsetenv("XDG_RUNTIME_DIR");
        fs::remove_all(folder);
    }
    /// Unlocked, or without any keyring, so that one would have to be made with the user. False where it is not
    /// installed.
    bool startKeychain(char const* option) {
        if (!findProgram("gnome-keyring-daemon")) return false;
        auto const daemonLine = std::string("gnome-keyring-daemon --foreground --components=secrets ") + option;
        auto started = ConnectedProcess::start({"/bin/sh", "-c",
                                                "printf pass | " + daemonLine + " >/dev/null 2>&1 & until [ -S " +
                                                    (folder / "keyring/control").string() +
                                                    " ]; do sleep 0.05; done; echo ready; wait"});
        if (!started) return false;
        daemon.emplace(std::move(*started));
        return LineReader(daemon->socket(), 1000).next(20s).has_value();
    }
    static KeychainError failureOf(auto const& work) {
        try {
            work();
        } catch (KeychainError const& error) {
            return error;
        }
        ADD_FAILURE() << "it works";
        return {Kind::failed, 0, "", ""};
    }

    fs::path folder;
    TestBus bus;
    std::optional<ConnectedProcess> daemon;
};

}

TEST_F(KeychainOnBus, keepsASecretUntilItIsForgotten) {
    if (!startKeychain("--unlock")) GTEST_SKIP() << "gnome-keyring is not installed";
    Keychain const keychain(service, "Key of a test", 20s);
    EXPECT_FALSE(keychain.read());
    keychain.write(Secret("first"));
    keychain.write(Secret("sk_second “ß”"));
    ASSERT_TRUE(keychain.read());
    EXPECT_EQ(keychain.read()->text(), "sk_second “ß”");
    EXPECT_FALSE(Keychain("com.tavaro.other", "Other", 20s).read());
    EXPECT_TRUE(keychain.forget());
    EXPECT_FALSE(keychain.read());
    EXPECT_FALSE(keychain.forget());

    bus.kill(); // which ends programs that use it, unless they ask not to be
    EXPECT_EQ(failureOf([&] { keychain.write(Secret("third")); }).kind, Kind::failed);
}

TEST_F(KeychainOnBus, saysWhyItDoesNotKeepOne) {
    Keychain const keychain(service, "Key of a test", 3s);
    if (!startKeychain("")) GTEST_SKIP() << "gnome-keyring is not installed";
    auto const begun = std::chrono::steady_clock::now();
    auto const locked = failureOf([&] { keychain.write(Secret("key")); });
    EXPECT_THAT(locked.what(), ::testing::MatchesRegex("keychain write failed \\([0-9]+\\)"));
    EXPECT_FALSE(locked.reason.empty());
    EXPECT_LT(std::chrono::steady_clock::now() - begun, 10s);
    ::unsetenv("DBUS_SESSION_BUS_ADDRESS");
    EXPECT_EQ(failureOf([&] { keychain.read(); }).kind, Kind::missing);
    ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/no/such/bus", 1);
    auto const gone = failureOf([&] { keychain.read(); });
    EXPECT_EQ(gone.kind, Kind::failed);
    EXPECT_THAT(gone.what(), ::testing::StartsWith("Could not read the keychain: "));
}

TEST(Secret, isInNoOtherPlaceOfTheProcess) {
    Secret secret("sk_moved");
    Secret other(std::move(secret));
    secret = other.copy();
    EXPECT_EQ(secret.text(), "sk_moved");
    for (std::size_t i = 0; i < 2 * Secret::mostBytes; ++i) other.append('x');
    EXPECT_EQ(other.text().size(), Secret::mostBytes);
    EXPECT_STREQ(other.c_str() + Secret::mostBytes, "");
    auto const line = flagsOfPage(reinterpret_cast<std::uintptr_t>(secret.c_str()));
    EXPECT_THAT(line, HasSubstr(" dd ")) << "the page is in core images";
    EXPECT_THAT(line, HasSubstr(" wf ")) << "the page is in children";
}

TEST(Secret, leavesTheEnvironmentItIsTakenFrom) {
    // As `main` has it: from the environment that the process was started with, which the system shows.
    auto const answer = runProgram(
        {.command = {"/proc/self/exe", "--gtest_filter=Secret.DISABLED_child", "--gtest_also_run_disabled_tests"},
         .more = {"TAVARO_TEST_SECRET=sk_environment"}});
    EXPECT_TRUE(answer.isGood()) << answer.out << answer.error;
    EXPECT_THAT(answer.out, HasSubstr("1 test from 1 test suite ran"));
    EXPECT_FALSE(takeFromEnvironment("TAVARO_NO_SUCH_VARIABLE"));
}

TEST(Secret, DISABLED_child) {
    ASSERT_THAT(contents("/proc/self/environ"), HasSubstr("sk_environment"));
    auto const secret = takeFromEnvironment("TAVARO_TEST_SECRET");
    ASSERT_TRUE(secret);
    EXPECT_EQ(secret->text(), "sk_environment");
    EXPECT_EQ(std::getenv("TAVARO_TEST_SECRET"), nullptr);
    EXPECT_THAT(contents("/proc/self/environ"), ::testing::Not(HasSubstr("sk_environment")));
    auto const seen = runProgram({.command = {"/usr/bin/env"}});
    EXPECT_THAT(seen.out, ::testing::Not(HasSubstr("sk_environment")));
}

TEST(ProgramRun, givesAnAnswerWhateverTheProgramDoes) {
    using End = ProgramAnswer::End;
    auto const shell = [](std::string const& script, std::string input = "") {
        return runProgram(
            {.command = {"/bin/sh", "-c", script}, .input = std::move(input), .patience = 1s, .mostOutput = 1 << 20});
    };
    std::string const long1(700'000, 'x');
    EXPECT_EQ(shell("cat", long1).out, long1);
    EXPECT_EQ(shell("exec <&-; echo deaf", long1).out, "deaf\n");
    EXPECT_EQ(shell("echo no >&2; exit 3").exitCode, 3);
    EXPECT_EQ(shell("echo no >&2; exit 3").error, "no\n");
    EXPECT_EQ(shell("kill -9 $$").end, End::broken);
    EXPECT_EQ(shell("yes").end, End::tooMuch);
    EXPECT_EQ(shell("sleep 30").end, End::outOfTime);
    EXPECT_EQ(shell("exec >&- 2>&-; sleep 30").end, End::outOfTime);
    EXPECT_EQ(runProgram({.command = {"/no/such/program"}}).end, End::notStarted);
    std::stop_source source;
    source.request_stop();
    EXPECT_EQ(runProgram({.command = {"/bin/sleep", "30"}}, source.get_token()).end, End::cancelled);
}

}
