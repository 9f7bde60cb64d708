#include "../Capture/TestPortal.h"
#include "ProcessFixture.h"

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

/// The program on a Wayland desktop.
class SharedDesktopCommand : public ProcessFixture {
protected:
    void SetUp() override {
        if (!TestPortal::isInstalled()) GTEST_SKIP() << "pipewire, wireplumber or xdg-desktop-portal is not installed";
        portal.emplace();
    }
    std::optional<TestPortal> portal;
};

}

TEST_F(SharedDesktopCommand, aTakeSaysWhatItLacksBeforeItBeginsAndAsksOnce) {
    auto const listed = tavaro({"sources"});
    EXPECT_THAT(listed.out, HasSubstr("display-1"));
    EXPECT_THAT(listed.error, HasSubstr("does not tell of clicks and keys"));
    EXPECT_THAT(tavaro({"sources", "--json"}).out, HasSubstr(R"("limits":["This Wayland desktop does not tell of)"));

    portal->screen().movePointer({160, 100});
    for (auto const* const name : {"first.recproj", "second.recproj"}) {
        auto const taken = tavaro({"record", "--seconds", "0.5", "--no-polish", "--json", "-o", path(name)});
        EXPECT_EQ(taken.exitCode, 0) << taken.error;
        EXPECT_THAT(taken.error, HasSubstr("does not tell of clicks and keys"));
        EXPECT_THAT(taken.out, HasSubstr(R"("limits":["This Wayland desktop does not tell of clicks)"));
        auto const project = ProjectPackage(path(name)).load();
        EXPECT_EQ(project.sourceSize, (Size2{320, 200}));
        EXPECT_EQ(project.metadata->health.keyboardCaptured, false);
    }
    auto const questions = portal->questions();
    ASSERT_EQ(questions.size(), 2u);
    EXPECT_THAT(questions[0], HasSubstr(R"("restored": null)"));
    EXPECT_THAT(questions[1], HasSubstr(R"("restored": "chosen")"));
}

TEST_F(SharedDesktopCommand, withTheUsersConsentNobodyIsSentForItAnyMore) {
    EXPECT_THAT(tavaro({"sources"}).error, HasSubstr("`tavaro input allow`"));
    tavaro({"input", "allow", "--yes"});
    EXPECT_THAT(tavaro({"sources"}).error, Not(HasSubstr("`tavaro input allow`")));
    auto const taken = tavaro({"record", "--seconds", "0.5", "--no-polish", "-o", path("take.recproj")});
    EXPECT_EQ(taken.exitCode, 0) << taken.error;
    EXPECT_THAT(taken.error, Not(HasSubstr("`tavaro input allow`")));
}

TEST_F(SharedDesktopCommand, aTakeThatIsRefusedOrGivenUpLeavesNothing) {
    portal->answer({.answer = 1});
    auto const refused = tavaro({"record", "--seconds", "1", "-o", path("take.recproj")});
    EXPECT_NE(refused.exitCode, 0);
    EXPECT_THAT(refused.error, HasSubstr("the answer was no"));

    portal->answer({.answer = 3});
    auto running = start(TAVARO_PROGRAM, {"record", "-o", path("take.recproj")});
    ASSERT_TRUE(becomesTrue([&] { return portal->questions().size() == 2; }));
    EXPECT_TRUE(running.isRunning());
    running.send(SIGINT);
    ASSERT_TRUE(becomesTrue([&] { return !running.isRunning(); }));
    auto const givenUp = running.wait();
    EXPECT_NE(givenUp.exitCode, 0);
    EXPECT_THAT(givenUp.error, HasSubstr("waits: the desktop asks"));
    EXPECT_THAT(names(folder), Not(testing::Contains("take.recproj")));
}

TEST_F(SharedDesktopCommand, nothingIsAskedForATakeThatCannotBe) {
    for (auto const& [option, value] : {std::pair("--app", "gedit"), std::pair("--microphone", "none-such")}) {
        auto const refused = tavaro({"record", option, value, "-o", path("take.recproj")});
        EXPECT_NE(refused.exitCode, 0) << option;
        EXPECT_THAT(refused.error, Not(HasSubstr("the desktop asks"))) << option;
    }
    EXPECT_THAT(portal->questions(), testing::IsEmpty());
}
