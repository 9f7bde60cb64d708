#include "../Core/Package/TemporaryFolder.h"
#include "Refusal.h"

#include <Tavaro/Agents/MCPConsent.h>

#include <gtest/gtest.h>

#include <fstream>
#include <memory>

using namespace tavaro;

namespace {

class MCPConsentTest : public testing::Test {
protected:
    /// "code: sentence", "allowed", or nothing as long as the user thinks.
    std::string asked(MCPConsent& consent, std::string const& client, MCPToolName tool = MCPToolName::status) {
        auto const answer = std::make_shared<std::string>();
        consent.check(client, tool, [answer, this](auto const& no) {
            *answer = no ? refusal([&] { throw MCPToolError(*no); }) : "allowed";
            lastAnswer = *answer;
        });
        return *answer;
    }
    MCPConsent::Ask asks() {
        return [this](ConsentPrompt const& prompt, auto answer) {
            prompts.push_back(prompt);
            answers.push_back(answer);
            return [this] { ++withdrawn; };
        };
    }

    TemporaryFolder const folder;
    Preferences preferences{folder / "preferences.json"};
    std::string lastAnswer; // also one that came later
    std::vector<ConsentPrompt> prompts;
    int withdrawn = 0;
    std::vector<std::function<void(std::optional<bool>)>> answers;
};

std::string const refused =
    "consent_denied: tester isn't allowed to control Tavaro. Allow it in Tavaro → Settings → MCP.";

}

TEST_F(MCPConsentTest, aClientIsAskedForOnceAndTheAnswerIsKept) {
    for (bool const isAllowed : {true, false}) {
        std::string const client = isAllowed ? "good" : "tester";
        MCPConsent consent(preferences, asks());
        std::vector<std::string> got;
        for (int i = 0; i < 2; ++i)
            consent.check(client, MCPToolName::status, [&](auto const& no) { got.push_back(no ? "no" : "yes"); });
        ASSERT_EQ(answers.size(), 1u) << "two calls wait for one question";
        EXPECT_EQ(prompts[0].title, client + " wants to control Tavaro");
        EXPECT_TRUE(got.empty());
        answers[0](isAllowed);
        answers[0](!isAllowed); // too late
        EXPECT_EQ(got, std::vector<std::string>(2, isAllowed ? "yes" : "no"));
        EXPECT_EQ(asked(consent, client), isAllowed ? "allowed" : refused);
        Preferences later(folder / "preferences.json");
        MCPConsent restarted(later, asks());
        EXPECT_EQ(asked(restarted, client), isAllowed ? "allowed" : refused);
        EXPECT_EQ(answers.size(), 1u);
        answers.clear();
        prompts.clear();
    }
}

TEST_F(MCPConsentTest, whereNobodyCanBeAskedTheCallIsRefusedAndNothingIsStored) {
    MCPConsent alone(preferences);
    EXPECT_EQ(asked(alone, "tester"), refused);
    MCPConsent consent(preferences, asks());
    EXPECT_EQ(asked(consent, "tester"), "");
    lastAnswer.clear();
    answers[0](std::nullopt);
    EXPECT_EQ(lastAnswer, refused);
    EXPECT_EQ(consent.decision("tester"), MCPConsent::Decision::none);
    EXPECT_FALSE(std::filesystem::exists(folder / "preferences.json"));
    alone.allow("tester");
    EXPECT_EQ(asked(alone, "tester"), "allowed");
}

TEST_F(MCPConsentTest, whatIsDecidedElsewhereWhileTheUserThinksIsNotOverruled) {
    auto const off = "mcp_disabled: MCP is switched off in Tavaro → Settings → MCP.";
    Preferences elsewhere(folder / "preferences.json");
    MCPConsent decider(elsewhere);
    struct Case {
        std::function<void()> decide;
        std::string answer;
    };
    std::vector<Case> const cases{
        {[&] { decider.deny("tester"); }, refused},
        {[&] { decider.allow("tester", MCPConsent::Clicking::allowed); }, "allowed"},
        {[&] { elsewhere.set(agentsEnabled, false); }, off},
    };
    for (auto const& [decide, answer] : cases) {
        for (bool const isNoticed : {true, false}) { // before the user answers
            elsewhere.forget(agentsEnabled);
            decider.forget("tester");
            withdrawn = 0;
            MCPConsent consent(preferences, asks());
            ASSERT_EQ(asked(consent, "tester", MCPToolName::uiClick), "");
            ASSERT_EQ(asked(consent, "other"), "");
            lastAnswer.clear();
            decide();
            if (isNoticed) preferences.refresh();
            EXPECT_EQ(withdrawn, isNoticed ? answer == off ? 2 : 1 : 0);
            if (isNoticed) {
                EXPECT_EQ(lastAnswer, answer);
            }
            answers[answers.size() - 2](answer != "allowed");
            EXPECT_EQ(lastAnswer, answer);
            EXPECT_EQ(consent.decision("other"), MCPConsent::Decision::none);
            auto const known = answer == off ? std::vector<std::string>{} : std::vector<std::string>{"tester"};
            EXPECT_EQ(consent.clients(), known);
        }
    }
}

TEST_F(MCPConsentTest, onlyWhatIsTrueIsOn) {
    for (std::string const value : {R"("off")", "0", "null", "false", "[]", R"("true")"}) {
        preferences.set(agentsEnabled, true);
        ASSERT_TRUE(preferences.get(agentsEnabled));
        std::ofstream(folder / "preferences.json") << R"({"com.tavaro.mcp.enabled":)" << value << "}";
        EXPECT_FALSE(preferences.get(agentsEnabled)) << value;
    }
    preferences.forget(agentsEnabled);
    EXPECT_TRUE(preferences.get(agentsEnabled));
}

TEST_F(MCPConsentTest, allowingTakesBackARefusalAndTheOtherWayRound) {
    MCPConsent consent(preferences);
    for (int i = 0; i < 2; ++i) {
        consent.deny("tester");
        EXPECT_EQ(consent.decision("tester"), MCPConsent::Decision::denied);
        consent.allow("tester");
        consent.allow("tester");
        EXPECT_EQ(consent.decision("tester"), MCPConsent::Decision::allowed);
    }
    EXPECT_EQ(preferences.get(agentsAllowed).size(), 1u);
    EXPECT_TRUE(preferences.get(agentsDenied).empty());
}

TEST_F(MCPConsentTest, noDecisionKeepsClicksOfAnEarlierOne) {
    MCPConsent consent(preferences, asks());
    using Change = std::function<void()>;
    for (Change const& change : {Change([&] { consent.allow("tester"); }), Change([&] { consent.deny("tester"); }),
                                 Change([&] { consent.forget("tester"); })}) {
        consent.allow("tester", MCPConsent::Clicking::allowed);
        EXPECT_EQ(asked(consent, "tester", MCPToolName::uiClick), "allowed");
        change();
        EXPECT_TRUE(preferences.get(agentsClicking).empty());
        EXPECT_NE(asked(consent, "tester", MCPToolName::uiClick), "allowed");
    }
    preferences.set(agentsClicking, {"tester"}); // written there by hand
    answers[0](true);
    EXPECT_EQ(consent.clicking("tester"), MCPConsent::Clicking::denied);
}

TEST_F(MCPConsentTest, switchedOffNobodyMayAndNobodyIsAsked) {
    MCPConsent consent(preferences, asks());
    consent.allow("tester");
    preferences.set(agentsEnabled, false);
    for (auto const* const client : {"tester", "other"})
        EXPECT_EQ(asked(consent, client), "mcp_disabled: MCP is switched off in Tavaro → Settings → MCP.");
    EXPECT_TRUE(answers.empty());
}

TEST_F(MCPConsentTest, clickingAndTypingNeedMoreThanBeingAllowed) {
    MCPConsent consent(preferences);
    consent.allow("tester");
    for (auto const tool : allCases<MCPToolName>()) {
        bool const clicks =
            tool == MCPToolName::uiClick || tool == MCPToolName::uiScroll || tool == MCPToolName::uiKeys;
        EXPECT_EQ(asked(consent, "tester", tool),
                  clicks ? "consent_denied: tester isn't allowed to click and type in other apps. Allow it in Tavaro → "
                           "Settings → MCP."
                         : "allowed");
    }
    preferences.set(agentsClicking, {"tester"});
    for (auto const tool : allCases<MCPToolName>()) EXPECT_EQ(asked(consent, "tester", tool), "allowed");
}

TEST_F(MCPConsentTest, anAnswerThatComesAfterTheApplicationEndedIsNotHeard) {
    bool isAnswered = false;
    {
        MCPConsent consent(preferences, asks());
        consent.check("tester", MCPToolName::status, [&](auto const&) { isAnswered = true; });
    }
    answers[0](true);
    EXPECT_FALSE(isAnswered);
    EXPECT_TRUE(preferences.get(agentsAllowed).empty());
}
