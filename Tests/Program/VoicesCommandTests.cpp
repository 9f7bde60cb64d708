#include "../Voice/ElevenLabs/TestService.h"
#include "ProcessFixture.h"

#include <TavaroCore/Records/JSONValue.h>
#include <TavaroPlatform/Processes/ProgramRun.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace tavaro {

namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr auto key = "list-silent-0123456789";
constexpr auto noKey =
    "Add your ElevenLabs API key in Settings to generate voiceover. `tavaro voices key set` keeps it in your keychain; "
    "without a keychain, put it into the variable TAVARO_ELEVENLABS_KEY.\n";

class VoicesCommand : public ProcessFixture {
protected:
    VoicesCommand() {
        ::unsetenv("DBUS_SESSION_BUS_ADDRESS");
        ::unsetenv("XDG_RUNTIME_DIR");
    }

    ProgramAnswer run(Arguments arguments, std::string const& input, std::vector<std::string> const& more = {}) {
        arguments.insert(arguments.begin(), {TAVARO_PROGRAM, "voices"});
        auto answer = runProgram({.command = arguments, .input = input, .more = more});
        if (!input.empty()) {
            EXPECT_THAT(answer.out + answer.error, Not(HasSubstr(input.substr(0, 10))));
        }
        return answer;
    }
    static std::string contents(std::string const& file) {
        std::ostringstream text;
        text << std::ifstream(file, std::ios::binary).rdbuf();
        return text.str();
    }
};

}

TEST_F(VoicesCommand, listsAndPreviewsWhatSpeaksALanguage) {
    auto const listed = tavaro({"voices", "--language", "en-US", "--json"});
    ASSERT_EQ(listed.exitCode, 0) << listed.error;
    auto const voices = JSONValue::parse(listed.out);
    ASSERT_FALSE(voices.as<JSONValue::Array>()->empty()) << "no engine is installed";
    for (auto const& voice : *voices.as<JSONValue::Array>())
        EXPECT_THAT(*voice.find<std::string>("language"), StartsWith("en-US"));
    EXPECT_THAT(tavaro({"voices", "--all"}).out, HasSubstr("21m00Tcm4TlvDq8ikWAM"));
    EXPECT_THAT(tavaro({"voices"}).out, Not(HasSubstr("21m00Tcm4TlvDq8ikWAM")));
    EXPECT_THAT(tavaro({"voices", "--language", "xx"}).error, HasSubstr("No voice here speaks “xx”."));

    auto const id = *voices.as<JSONValue::Array>()->front().find<std::string>("id");
    auto const heard = tavaro({"voices", "--preview", id, "-o", path("a.wav")});
    EXPECT_EQ(heard.exitCode, 0) << heard.error;
    EXPECT_EQ(heard.out, path("a.wav") + "\n");
    EXPECT_THAT(read("a.wav"), StartsWith("RIFF"));
    EXPECT_GT(read("a.wav").size(), 96'000u);
    EXPECT_EQ(tavaro({"voices", "--preview", id, "-o", path("a.wav")}).exitCode, 1) << "it is written over";
    EXPECT_EQ(tavaro({"voices", "--preview", id, "-o", path("a.wav"), "--overwrite"}).exitCode, 0);
    EXPECT_EQ(tavaro({"voices", "--preview", id, "-o", path("a.mp3")}).exitCode, 2);
    EXPECT_EQ(tavaro({"voices", "--preview", id}).exitCode, 2);
    auto const none = tavaro({"voices", "--preview", "system:flite/nobody", "-o", path("b.wav")});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_THAT(none.error, HasSubstr("There is no voice “system:flite/nobody” here"));
    auto const paid = tavaro({"voices", "--preview", "21m00Tcm4TlvDq8ikWAM", "-o", path("b.wav")});
    EXPECT_EQ(paid.error, noKey);
    EXPECT_THAT(names(folder), Not(::testing::Contains("b.wav")));
}

TEST_F(VoicesCommand, keepsASampleThatIsPaidFor) {
    ffmpeg({"-f", "lavfi", "-i", "sine=440:duration=1", path("tone.mp3")});
    TestService service({"--audio", path("tone.mp3")});
    std::vector<std::string> const more{"TAVARO_ELEVENLABS_KEY=sk_0123456789abcdef",
                                        "TAVARO_ELEVENLABS_HOST=" + service.host(), "XDG_CACHE_HOME=" + path("cache")};
    for (auto const* const name : {"a.wav", "b.wav"})
        EXPECT_EQ(run({"--preview", "ok", "-o", path(name)}, "", more).error, "");
    EXPECT_EQ(service.requests().size(), 1u) << "it is paid for each time";
    EXPECT_THAT(read("a.wav"), StartsWith("RIFF"));
    EXPECT_GT(read("a.wav").size(), 90'000u);
    EXPECT_EQ(read("a.wav"), read("b.wav"));
}

TEST_F(VoicesCommand, takesAKeyFromNoArgumentAndShowsItNowhere) {
    EXPECT_THAT(run({"key", "set"}, "sk_0123456789abcdef\n").error, HasSubstr("keychain write failed (0)"));
    EXPECT_THAT(run({"key", "set"}, "short\n").error, HasSubstr("too short or too long"));
    EXPECT_THAT(run({"key", "set"}, "sk_01234 56789abcdef\n").error, HasSubstr("other characters"));
    EXPECT_EQ(run({"key", "set"}, "").exitCode, 1);
    EXPECT_EQ(run({"key", "set", "sk_0123456789abcdef"}, "").exitCode, 2);
    EXPECT_EQ(run({"key", "check"}, "").error, noKey);
    TestService service;
    auto const host = "TAVARO_ELEVENLABS_HOST=" + service.host();
    auto const good = run({"key", "check"}, "", {"TAVARO_ELEVENLABS_KEY=sk_0123456789abcdef", host});
    EXPECT_EQ(good.out, "ElevenLabs takes the key.\n") << good.error;
    auto const asGiven = [&](std::string const& text) {
        return run({"key", "check"}, "", {"TAVARO_ELEVENLABS_KEY=" + text, host});
    };
    EXPECT_EQ(asGiven(" sk_0123456789abcdef\r\n").out, "ElevenLabs takes the key.\n") << "a file's end is no key's";
    service.requests();
    EXPECT_THAT(asGiven("sk_01234\r\nX-More: 56789").error, HasSubstr("Look at the variable TAVARO_ELEVENLABS_KEY"));
    for (auto const length : {3u, 300u, 3000u})
        EXPECT_THAT(asGiven(std::string(length, 'k')).error, HasSubstr("too short or too long")) << length;
    EXPECT_TRUE(service.requests().empty()) << "what is no key is sent";
    EXPECT_EQ(run({"key", "check"}, "", {"TAVARO_ELEVENLABS_KEY=list-status-403", host}).error,
              "That ElevenLabs API key was rejected.\n");
}

TEST_F(VoicesCommand, hasTheKeyInNothingThatOthersSeeWhileItWorks) {
    TestService service;
    ::setenv("TAVARO_ELEVENLABS_HOST", service.host().c_str(), 1);
    ::setenv("TAVARO_ELEVENLABS_KEY", key, 1);
    auto running = start(TAVARO_PROGRAM, {"voices", "key", "check"});
    ::unsetenv("TAVARO_ELEVENLABS_KEY");
    ::unsetenv("TAVARO_ELEVENLABS_HOST");
    ASSERT_TRUE(becomesTrue([&] { return !service.requests().empty(); }));
    auto const process = "/proc/" + std::to_string(running.process()) + "/";
    EXPECT_THAT(contents(process + "environ"), HasSubstr("TAVARO_ELEVENLABS_HOST"));
    EXPECT_THAT(contents(process + "environ"), Not(HasSubstr(key)));
    EXPECT_THAT(contents(process + "cmdline"), Not(HasSubstr(key)));
    running.send(SIGKILL);
    running.wait();
    for (auto const& entry : std::filesystem::recursive_directory_iterator(folder)) {
        bool const isShown = entry.is_regular_file() && contents(entry.path()).find(key) != std::string::npos;
        EXPECT_FALSE(isShown) << entry.path();
    }
}

}
