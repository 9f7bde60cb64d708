#include <TavaroCapture/Accessibility/Private/ActiveWindow.h>

#include "../Secrets/FakeForm.h"
#include "../TestDisplay.h"

#include <poll.h>
#include <unistd.h>

namespace tavaro::atspi {

namespace {

class ActiveWindowTest : public testing::Test {
protected:
    void SetUp() override {
        if (bus.address().empty()) GTEST_SKIP() << "dbus-daemon is not installed";
    }

    void watch(int desktop = 0) { active.emplace(openBus(bus.address()), desktop); }
    /// Without a name: none.
    bool comesToFront(std::string const& name) {
        return eventually([&] {
            listen();
            auto const& application = active->window().application;
            return (application ? application->name : "") == name;
        });
    }
    /// Until all that was asked is answered.
    void settle() {
        active->listen();
        eventually([&] { return listen(), active->patience() < 0; });
    }
    void listen() {
        pollfd watched{active->descriptor(), POLLIN, 0};
        poll(&watched, 1, 5);
        active->listen();
    }

    TestBus bus;
    std::optional<ActiveWindow> active;
};

TEST_F(ActiveWindowTest, itIsTheOneThatWasInFrontBeforeAndThenWhicheverComesThere) {
    FakeForm before(bus, {}, "before");
    watch();
    ASSERT_TRUE(comesToFront("before"));
    EXPECT_EQ(active->window().process, getpid());
    EXPECT_FALSE(active->window().asksForSecret);

    std::optional<FakeForm> after(std::in_place, bus, std::vector<FakeForm::Field>{}, "after");
    after->activate(true); // and the other says only later that it is not in front any more
    ASSERT_TRUE(comesToFront("after"));
    before.activate(false);
    settle();
    EXPECT_TRUE(comesToFront("after"));

    after->activate(false);
    EXPECT_TRUE(comesToFront("")) << "a program that says nothing of its windows has the keyboard";
    after->activate(true);
    EXPECT_TRUE(comesToFront("after"));
    after->close();
    EXPECT_TRUE(comesToFront(""));
    after->activate(true);
    EXPECT_TRUE(comesToFront("after"));
    after.reset();
    EXPECT_TRUE(comesToFront("")) << "its program has ended without a word";
}

TEST_F(ActiveWindowTest, anApplicationIsCalledByItsNameElseByItsWindowsTitle) {
    FakeForm prompt(bus, {}, "pinentry-gtk-2");
    watch();
    ASSERT_TRUE(comesToFront("pinentry-gtk-2"));
    EXPECT_TRUE(active->window().asksForSecret);
    FakeForm nameless(bus, {}, "");
    nameless.activate(true);
    EXPECT_TRUE(comesToFront("The window of "));
}

TEST_F(ActiveWindowTest, whatIsAskedOfOneThatIsNotInFrontAnyMoreCountsForNothing) {
    FakeForm first(bus, {}, "first"), second(bus, {}, "second");
    first.activate(false);
    watch();
    settle();
    second.activate(true);
    second.activate(false);
    settle();
    EXPECT_EQ(active->window(), FrontWindow());
}

TEST_F(ActiveWindowTest, theDesktopsOwnWindowsAreNoApplications) {
    FakeForm shell(bus, {}, "shell");
    watch(getpid());
    settle();
    shell.activate(false), shell.activate(true);
    settle();
    EXPECT_EQ(active->window(), FrontWindow());
}

TEST_F(ActiveWindowTest, nobodyTellsOnceTheBusIsGone) {
    watch();
    settle();
    bus.kill();
    EXPECT_TRUE(eventually([&] { return !active->listen(); }));
}

}

}
