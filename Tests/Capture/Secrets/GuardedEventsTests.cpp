#include "../TestDisplay.h"
#include "FakeForm.h"

#include <TavaroCapture/Secrets/Private/GuardedEvents.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <mutex>

namespace tavaro {

namespace {

/// A keyboard on which a test types.
class TypedKeys final : public EventSource {
public:
    explicit TypedKeys(EventHandlers& handlers) : handlers_(handlers) {}
    void start(EventHandlers handlers) override { handlers_ = std::move(handlers); }
    void stop() override {
        handlers_.key = [](double, Chord const&) {};
    }
    bool hasKeyboard() const override { return true; }
    std::optional<PixelPoint> pointer() override { return std::nullopt; }

private:
    EventHandlers& handlers_;
};

}

class GuardedEventsTest : public testing::Test {
protected:
    void SetUp() override {
        if (bus.address().empty()) GTEST_SKIP() << "dbus-daemon is not installed";
    }
    void TearDown() override { events.reset(); }

    /// A form with an open field, 0, and a password field, 1.
    void showForm() { form.emplace(bus, std::vector<FakeForm::Field>{{}, {.isPassword = true}}); }
    void begin(KeyLogging keys = KeyLogging::all) {
        auto focus = std::make_unique<FieldFocus>(atspi::openBus(bus.address()));
        events.emplace(std::make_unique<TypedKeys>(keyboard), LoggedKeys{keys}, std::move(focus));
        events->start({.key =
                           [this](double at, Chord const& chord) {
                               std::lock_guard const lock(mutex);
                               EXPECT_TRUE(lastAt <= at);
                               lastAt = at;
                               if (!logged_.ends_with(chord.key)) logged_ += chord.key;
                           },
                       .frontmost = [](FrontWindow const&) {}});
    }
    void type(std::string const& keys) {
        for (char const key : keys) keyboard.key(mediaClockNow(), {.key = std::string(1, key)});
    }
    /// What is logged up to this mark, which is typed until it is.
    std::string loggedUntil(char mark) {
        eventually([&] {
            type(std::string(1, mark));
            settle();
            return logged().find(mark) != std::string::npos;
        });
        return logged().substr(0, logged().find(mark) + 1);
    }
    std::string logged() {
        std::lock_guard const lock(mutex);
        return logged_;
    }
    /// Until the source has been told of everything that the form did so far.
    void settle() {
        double const until = mediaClockNow() + 0.05;
        eventually([&] { return mediaClockNow() > until; });
    }

    TestBus bus;
    std::optional<FakeForm> form;
    EventHandlers keyboard;
    std::optional<GuardedEvents> events;

private:
    std::mutex mutex;
    std::string logged_; // guarded by mutex
    double lastAt = 0;   // guarded by mutex
};

TEST_F(GuardedEventsTest, keysAreLoggedInOpenFieldsOnly) {
    showForm();
    form->focus(0);
    settle();
    begin();
    type("ab");
    EXPECT_EQ(loggedUntil('.'), "ab.");
    form->focus(1);
    settle();
    type("secret");
    settle();
    form->focus(0);
    EXPECT_EQ(loggedUntil('c'), "ab.c");
}

TEST_F(GuardedEventsTest, aFieldThatHasTheKeyboardBeforeTheTakeIsFound) {
    showForm();
    form->focus(1);
    settle();
    begin();
    type("secret");
    settle();
    form->focus(0);
    EXPECT_EQ(loggedUntil('a'), "a");
}

TEST_F(GuardedEventsTest, aFieldThatLosesTheKeyboardBeforeItIsFoundMayHaveBeenAPasswords) {
    showForm();
    form->focus(1);
    settle();
    form->stall();
    begin();
    type("secret");
    form->focus(0);
    settle();
    form->goOn();
    EXPECT_EQ(loggedUntil('a'), "a");
}

TEST_F(GuardedEventsTest, whatIsTypedAheadOfABusyProgramWaitsUntilItIsKnownWhereItGoes) {
    showForm();
    form->focus(0);
    begin();
    EXPECT_EQ(loggedUntil('a'), "a");
    for (bool const staysThere : {true, false}) {
        form->stall();
        type("\tsecret\n");
        for (int i = 0; i < 6; ++i) settle();
        form->focus(1); // what the program makes of the tab
        if (!staysThere) form->focus(0);
        form->goOn();
        settle();
        if (staysThere) form->focus(0);
        EXPECT_EQ(loggedUntil(staysThere ? 'b' : 'd'), staysThere ? "ab" : "abd");
    }
}

TEST_F(GuardedEventsTest, aFieldThatShowsDotsIsAPasswordsWhateverItsRole) {
    showForm();
    form->focus(0);
    form->fill(0, "●●●");
    begin();
    type("secret");
    for (int i = 0; i < 4; ++i) settle();
    form->fill(0, "plain ●");
    settle();
    EXPECT_EQ(loggedUntil('a'), "a");
}

TEST_F(GuardedEventsTest, aPasswordFieldCountsOnlyWhileItsWindowHasTheKeyboardAndItsProgramLives) {
    showForm();
    begin();
    form->focus(1);
    settle();
    form->activate(false);
    settle();
    EXPECT_EQ(loggedUntil('a'), "a");
    form->activate(true);
    form->focus(1);
    settle();
    type("secret");
    settle();
    form.reset();
    EXPECT_EQ(loggedUntil('b'), "ab");
}

TEST_F(GuardedEventsTest, aPromptThatIsGoneWithoutAWordKeepsNothingOutOfTheLog) {
    showForm();
    begin();
    form->focus(1);
    settle();
    FakeForm other(bus, {{}});
    other.focus(0); // nobody says that the window of the first is no longer in front
    type("secret");
    for (int i = 0; i < 3; ++i) settle();
    form->leave();
    EXPECT_EQ(loggedUntil('a'), "a");
    form->focus(1);
    settle();
    other.focus(0);
    type("secret");
    for (int i = 0; i < 3; ++i) settle();
    form.reset();
    EXPECT_EQ(loggedUntil('b'), "ab");
    bus.kill();
    EXPECT_EQ(loggedUntil('d'), "abd") << "windows and terminals still tell";
}

TEST_F(GuardedEventsTest, noKeyIsLoggedWhileAPromptThatIsKnownAsSuchIsInFront) {
    begin();
    EXPECT_EQ(loggedUntil('a'), "a");
    keyboard.frontmost({.asksForSecret = true});
    type("secret");
    for (int i = 0; i < 3; ++i) settle();
    keyboard.frontmost({});
    EXPECT_EQ(loggedUntil('b'), "ab");
    type("secret");
    keyboard.frontmost({.asksForSecret = true}); // and whoever is slow to see that has sent its first keys before
    for (int i = 0; i < 3; ++i) settle();
    keyboard.frontmost({});
    EXPECT_EQ(loggedUntil('d'), "abd");
}

TEST_F(GuardedEventsTest, theEndOfTheTakeWaitsForNobodyAndKeepsWhatIsUnknownOut) {
    showForm();
    form->focus(0);
    begin();
    EXPECT_EQ(loggedUntil('a'), "a");
    form->stall();
    type("b");
    double const began = mediaClockNow();
    events->stop();
    EXPECT_LT(mediaClockNow() - began, 1);
    EXPECT_EQ(logged(), "a");
}

TEST_F(GuardedEventsTest, withoutTypingOnlyShortcutsAreLeft) {
    begin(KeyLogging::shortcuts);
    type("a");
    keyboard.key(mediaClockNow(), {.shift = true, .key = "B"});
    keyboard.key(mediaClockNow(), {.control = true, .key = "s"});
    EXPECT_EQ(loggedUntil('s'), "s");
}

}
