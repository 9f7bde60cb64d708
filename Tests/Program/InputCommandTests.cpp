#include "ProcessFixture.h"
#include "TestTerminal.h"

#include <TavaroCapture/Input/InputConsent.h>
#include <TavaroCore/Records/JSONValue.h>

#include <gmock/gmock.h>
#include <unistd.h>

using namespace tavaro;
using ::testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

class InputCommand : public ProcessFixture {
protected:
    Outcome input(Arguments words) {
        words.insert(words.begin(), "input");
        return tavaro(words);
    }
    bool isAllowed() { return *JSONValue::parse(input({"--json"}).out).find<bool>("isAllowed"); }
    /// The answer at a terminal to what is asked there.
    int answer(std::string const& typed) {
        TestTerminal terminal([] { execl(TAVARO_PROGRAM, TAVARO_PROGRAM, "input", "allow", nullptr); });
        shown = terminal.shownUntil("[y/N] ");
        terminal.type(typed);
        shown += terminal.shownUntil("\n");
        return terminal.exitCode();
    }
    std::string shown;
};

}

TEST_F(InputCommand, nothingIsAllowedUntilThePersonSaysSoAndARevocationCounts) {
    EXPECT_FALSE(isAllowed());
    EXPECT_THAT(input({}).out, HasSubstr("does not read the input devices; `tavaro input allow`"));
    EXPECT_FALSE(fs::exists(folder / "state")) << "looking changes nothing";

    EXPECT_EQ(answer("\n"), 1);
    EXPECT_THAT(shown, HasSubstr("Every key that you press, in whatever program"));
    EXPECT_FALSE(isAllowed());
    EXPECT_EQ(answer("y\n"), 0);
    EXPECT_TRUE(isAllowed());
    EXPECT_THAT(input({"status"}).out, HasSubstr("Tavaro may read clicks and keys from the input devices, since 20"));

    EXPECT_THAT(input({"revoke"}).out, HasSubstr("closed from now on"));
    EXPECT_FALSE(isAllowed());
    EXPECT_EQ(input({"revoke"}).out, "It was not allowed.\n");
}

TEST_F(InputCommand, aScriptSaysYesAndHowTheDevicesAreSetUp) {
    auto const made = JSONValue::parse(input({"allow", "--yes", "--taps", "--json"}).out);
    EXPECT_TRUE(*made.find<bool>("isAllowed"));
    EXPECT_TRUE(*made.find<bool>("countsTaps"));
    EXPECT_FALSE(*made.find<bool>("isLeftHanded"));
    auto const file = inputConsentFile();
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(input({"allow", "--sure"}).exitCode, 2);
}

TEST_F(InputCommand, withoutATerminalNobodyIsAskedAndNothingAllowed) {
    auto running = start("/usr/bin/setsid", {"--wait", TAVARO_PROGRAM, "input", "allow"});
    auto const outcome = running.wait();
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.error, HasSubstr("nobody could be asked. `tavaro input allow --yes`"));
    EXPECT_FALSE(isAllowed());
}
