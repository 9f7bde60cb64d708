#include "ProcessFixture.h"

#include <Tavaro/Agents/MCPConsent.h>

#include <TavaroCore/Records/JSONValue.h>
#include <TavaroMCP/Bridge/MCPSocketPath.h>
#include <TavaroPlatform/Sockets/UnixSocketListener.h>

#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <optional>

using namespace tavaro;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
namespace fs = std::filesystem;

namespace {

class MCPCommand : public ProcessFixture {
protected:
    MCPCommand() { setenv("XDG_CONFIG_HOME", path("config").c_str(), 1); }
    ~MCPCommand() override { unsetenv("XDG_CONFIG_HOME"); }

    Outcome mcp(Arguments words) {
        words.insert(words.begin(), "mcp");
        return tavaro(words);
    }
    /// "allowed | with clicks | refused", by what the program prints.
    std::string lists() {
        auto const access = JSONValue::parse(mcp({"--json"}).out);
        std::string allowed, clicking, refused;
        for (auto const& client : *access.find<JSONValue::Array>("allowed")) {
            auto const name = *client.find<std::string>("name") + " ";
            allowed += name;
            if (*client.find<bool>("mayClick")) clicking += name;
        }
        for (auto const& client : *access.find<JSONValue::Array>("refused")) refused += *client.as<std::string>() + " ";
        return allowed + "| " + clicking + "| " + refused;
    }
};

}

TEST_F(MCPCommand, eachDecisionTakesTheOneBeforeBackClicksToo) {
    struct Step {
        Arguments words;
        std::string says, lists;
    };
    std::vector<Step> const steps{
        {{"allow", "A"}, "A may control Tavaro, but not click and type in other apps.\n", "A | | "},
        {{"allow", "A", "--clicks"}, "A may control Tavaro, and click and type in other apps.\n", "A | A | "},
        {{"allow", "B C", "--clicks"},
         "B C may control Tavaro, and click and type in other apps.\n",
         "A B C | A B C | "},
        {{"refuse", "A"}, "A may not control Tavaro.\n", "B C | B C | A "},
        {{"refuse", "A"}, "A may not control Tavaro.\n", "B C | B C | A "},
        {{"allow", "A"}, "A may control Tavaro, but not click and type in other apps.\n", "B C A | B C | "},
        {{"allow", "B C"}, "B C may control Tavaro, but not click and type in other apps.\n", "B C A | | "},
        {{"forget", "B C"}, "B C will be asked for again.\n", "A | | "},
    };
    for (auto const& step : steps) {
        auto const outcome = mcp(step.words);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
        EXPECT_EQ(outcome.out, step.says);
        EXPECT_EQ(lists(), step.lists) << step.words[0] << " " << step.words[1];
    }
}

TEST_F(MCPCommand, showsWhatIsDecidedAndWhetherAnApplicationAnswers) {
    EXPECT_EQ(mcp({}).out, "Agent control is on.\nTavaro does not run; an agent's first call starts it, at “" +
                               mcpSocketPath().string() +
                               "”.\nNo client is known yet; each is asked for when it first calls.\n");
    EXPECT_FALSE(fs::exists(mcpSocketPath().parent_path())) << "looking changes nothing";
    EXPECT_FALSE(fs::exists(path("config")));
    mcp({"off"});
    mcp({"allow", "A", "--clicks"});
    mcp({"allow", "B"});
    mcp({"refuse", "C"});
    UnixSocketListener const listener(mcpSocketPath());
    EXPECT_EQ(mcp({}).out,
              "Agent control is off; `tavaro mcp on` switches it on.\nTavaro runs and answers agents at “" +
                  mcpSocketPath().string() + "”.\nAllowed: A, also to click and type\nAllowed: B\nRefused: C\n");
    EXPECT_THAT(mcp({"allow", "B"}).out, HasSubstr("Agent control is off, though."));
    EXPECT_THAT(mcp({"on", "--json"}).out, HasSubstr(R"("isOn":true,"isRunning":true)"));
}

TEST_F(MCPCommand, aSwitchThatWasOffInADamagedFileIsSaidEachTime) {
    mcp({"off"});
    auto const file = Preferences::usualFile();
    std::ofstream(file, std::ios::app) << "}";
    EXPECT_THAT(mcp({}).error, HasSubstr("Your preferences were damaged"));
    auto const aside = (file.parent_path() / "preferences.damaged.json").string();
    EXPECT_THAT(mcp({}).out, HasSubstr("Damaged: “" + aside + "”; what was chosen there, also “off”, counts no more."));
    EXPECT_THAT(mcp({"--json"}).out, HasSubstr("\"damaged\":[\"" + aside + "\"]"));
    fs::remove(aside);
    EXPECT_THAT(mcp({}).out, Not(HasSubstr("Damaged")));
}

TEST_F(MCPCommand, aSocketThatCannotBeThereIsSaid) {
    setenv("XDG_DATA_HOME", path(std::string(120, 'x')).c_str(), 1);
    auto const outcome = mcp({});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.out, HasSubstr("Agents cannot reach Tavaro: Socket path is too long."));
}

TEST_F(MCPCommand, namesOfAnyKindAreKeptAsTheyAreAndShownHarmless) {
    std::string const steering = "\x1b[2Jgood\n", endless(10'000, 'e');
    for (auto const& name : {steering, endless}) EXPECT_EQ(mcp({"allow", name}).exitCode, 0);
    EXPECT_EQ(Preferences().get(agentsAllowed), (std::vector{steering, endless}));
    auto const shown = mcp({}).out;
    EXPECT_THAT(shown, Not(HasSubstr("\x1b")));
    EXPECT_LT(shown.size(), 1000u);
    EXPECT_EQ(mcp({"forget", std::string(100, 'e') + "…"}).exitCode, 0) << "as it is shown";
    EXPECT_EQ(mcp({"forget", steering}).exitCode, 0);
    EXPECT_THAT(Preferences().get(agentsAllowed), IsEmpty());
}

TEST_F(MCPCommand, whatCannotBeDoneIsASentence) {
    auto const unknown = mcp({"forget", "nobody"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_EQ(unknown.error, "No client “nobody” is allowed or refused; `tavaro mcp` lists those that are.\n");
    for (Arguments const& words : {Arguments{"allow"}, {"allow", ""}, {"frobnicate"}, {"refuse", "A", "--clicks"}})
        EXPECT_EQ(mcp(words).exitCode, 2) << words[0];
    fs::create_directories(Preferences::usualFile());
    auto const unwritable = mcp({"allow", "A"});
    EXPECT_EQ(unwritable.exitCode, 1);
    EXPECT_THAT(unwritable.error, HasSubstr("Could not read “" + Preferences::usualFile().string()));
}

TEST_F(MCPCommand, registrationsArePastedWhateverTheFoldersName) {
    auto const bin = folder / R"(a "b" $HOME `id` \ !x 'c')";
    auto const here = folder / "here";
    fs::create_directories(bin);
    fs::create_directories(here);
    fs::copy_file(TAVARO_PROGRAM, bin / "tavaro");
    write("server", "#!/bin/sh\necho served\n");
    write("claude", "#!/bin/sh\n[ \"$1 $2 $3 $4\" = 'mcp add tavaro --' ] && shift 4 && exec \"$@\"\n");
    fs::copy_file(path("server"), bin / "tavaro-mcp");
    fs::copy_file(path("claude"), here / "claude");
    for (auto const& program : {bin / "tavaro-mcp", here / "claude"}) fs::permissions(program, fs::perms::owner_all);

    auto const printed = start((bin / "tavaro").string(), {"mcp", "config"}).wait();
    ASSERT_EQ(printed.exitCode, 0) << printed.error;
    auto const begin = printed.out.find("claude mcp");
    auto const line = printed.out.substr(begin, printed.out.find('\n', begin) - begin);
    setenv("PATH", (here.string() + ":" + getenv("PATH")).c_str(), 1);
    for (auto const* const shell : {"sh", "bash"}) {
        auto const outcome = start(shell, {"-c", line}).wait();
        EXPECT_EQ(outcome.out, "served\n") << shell << ": " << line << "\n" << outcome.error;
    }
    write("pasted", "set -o history\nset -H\n" + line + "\n"); // as at the prompt of a shell
    auto const interactive = start("bash", {path("pasted")}).wait();
    EXPECT_EQ(interactive.out, "served\n") << interactive.error;

    auto const configuration = start((bin / "tavaro").string(), {"mcp", "config", "--json"}).wait().out;
    EXPECT_THAT(printed.out, HasSubstr(configuration));
    auto const json = JSONValue::parse(configuration);
    auto const* const server = json.find("mcpServers")->find("tavaro");
    EXPECT_EQ(*server->find<std::string>("command"), (bin / "tavaro-mcp").string());
}
