#include "../../Core/Package/TemporaryFolder.h"

#include <Tavaro/Studio/Settings/AgentSettings.h>
#include <Tavaro/Studio/Settings/ConsentQuestions.h>

#include <gmock/gmock.h>

#include <QAbstractItemModelTester>

using namespace tavaro;
using ::testing::ElementsAre;

namespace {

class Consent : public testing::Test {
protected:
    void call(std::string const& client) {
        consent.check(client, MCPToolName::status, [this, client](auto const& refusal) {
            answers.push_back(client + (refusal ? ": no" : ": yes"));
        });
    }
    std::string asked() const { return questions->title().toStdString(); }

    TemporaryFolder const folder;
    Preferences preferences{folder / "preferences.json"};
    std::optional<ConsentQuestions> questions{std::in_place};
    MCPConsent consent{preferences, questions->asker()};
    AgentSettings settings{preferences};
    std::vector<std::string> answers;
};

}

TEST_F(Consent, clientsAreAskedForOneAfterTheOther) {
    for (auto const* const client : {"a", "b", "c", "a"}) call(client);
    EXPECT_EQ(asked(), "a wants to control Tavaro");
    EXPECT_THAT(questions->text().toStdString(), testing::HasSubstr("record your screen"));
    questions->allow();
    EXPECT_EQ(asked(), "b wants to control Tavaro");
    questions->deny();
    questions->dismiss();
    EXPECT_FALSE(questions->isAsking());
    questions->allow(); // a second press
    EXPECT_THAT(answers, ElementsAre("a: yes", "a: yes", "b: no", "c: no"));
    EXPECT_THAT(consent.clients(), ElementsAre("a", "b")) << "of c nothing is decided";
}

TEST_F(Consent, aQuestionThatIsDecidedElsewhereIsTakenBack) {
    call("a"), call("b");
    MCPConsent(preferences).deny("a");
    EXPECT_EQ(asked(), "b wants to control Tavaro");
    settings.setOn(false);
    EXPECT_FALSE(questions->isAsking());
    EXPECT_THAT(answers, ElementsAre("a: no", "b: no"));
}

TEST_F(Consent, whoWaitsIsRefusedWhereTheWindowGoesAway) {
    call("a");
    questions.reset();
    EXPECT_THAT(answers, ElementsAre("a: no"));
    EXPECT_THAT(consent.clients(), ElementsAre());
}

TEST_F(Consent, theSettingsShowWhatIsDecidedAndDecideIt) {
    QAbstractItemModelTester const tester(&settings, QAbstractItemModelTester::FailureReportingMode::Fatal);
    MCPConsent elsewhere(preferences);
    elsewhere.allow("agent"), elsewhere.deny("other");
    ASSERT_EQ(settings.rowCount(), 2);
    EXPECT_TRUE(settings.index(0).data(AgentSettings::allowedRole).toBool());
    EXPECT_FALSE(settings.index(1).data(AgentSettings::allowedRole).toBool());
    settings.setClicks(0, true);
    EXPECT_EQ(consent.clicking("agent"), MCPConsent::Clicking::allowed);
    settings.setAllowed(0, false);
    EXPECT_EQ(consent.decision("agent"), MCPConsent::Decision::denied);
    EXPECT_EQ(consent.clicking("agent"), MCPConsent::Clicking::denied);
    settings.setAllowed(1, true);
    EXPECT_EQ(consent.decision("other"), MCPConsent::Decision::allowed);
    settings.forget(0);
    EXPECT_EQ(settings.rowCount(), 1);
    EXPECT_EQ(consent.decision("agent"), MCPConsent::Decision::none);
    settings.forget(7); // a row that is gone
}
