#include "../SinkProgram.h"

#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroAutomation/Input/Private/Pointer.h>
#include <TavaroAutomation/Input/Private/Typist.h>
#include <TavaroCore/Records/Fields.h>

#include <cstdlib>
#include <gmock/gmock.h>

namespace tavaro {

namespace {

constexpr TypingPace pace{std::chrono::milliseconds(10), std::chrono::milliseconds(0)};

}

/// What programs of real toolkits make of the pointer and the keyboard.
class ToolkitInputTest : public testing::TestWithParam<SinkToolkit> {
protected:
    void SetUp() override {
        if (!TestDisplay::isInstalled()) GTEST_SKIP() << "Xvfb is not installed";
        if (!SinkProgram::isInstalled(GetParam())) GTEST_SKIP() << nameOf(GetParam()) << " is not installed";
        display.emplace(640, 520);
        client.emplace(display->name());
        sink.emplace(*display, GetParam());
        ASSERT_TRUE(sink->awaitReady(*client));
    }

    bool useLayouts(std::string const& names) {
        return std::system(("setxkbmap -display " + display->name() + " -layout " + names).c_str()) == 0;
    }
    /// Half of what the toolkit moves by one notch of the wheel here.
    double halfNotch() const { return GetParam() == SinkToolkit::chromium ? 60.5 : 40; }

    std::optional<TestDisplay> display;
    std::optional<TestClient> client;
    std::optional<SinkProgram> sink;
};

TEST_P(ToolkitInputTest, noCharacterIsLost) {
    auto const text = textToType(700);
    Typist typist(display->name(), {std::chrono::milliseconds(8), std::chrono::milliseconds(0)});
    typist.type(text);
    eventually([&] { return sink->text().size() >= text.size(); });
    EXPECT_EQ(sink->text(), text);
}

TEST_P(ToolkitInputTest, everyLayoutTypesTheSame) {
    struct Layout {
        char const* names;
        int inUse = 0;
    };
    std::string const text = "aZ qwerty 159 +-/@#{}[]|\\~^´`\"' éß№ дом 日e\u0301 👩🏽\u200d💻\n";
    std::string expected;
    for (auto const [names, inUse] : {Layout{"de"}, {"fr"}, {"us,ru"}, {"ru"}, {"us,ru", 1}}) {
        if (!useLayouts(names)) GTEST_SKIP() << "there is no setxkbmap";
        client->useLayout(inUse);
        Typist(display->name(), pace).type(text);
        expected += text;
        eventually([&] { return sink->text() == expected; });
        ASSERT_EQ(sink->text(), expected) << names << " " << inUse;
    }
}

TEST_P(ToolkitInputTest, shortcutsWorkInLayoutsWithoutTheirLetters) {
    // Chromium knows no shortcut by a key that has no place on a keyboard.
    bool const needsPlace = GetParam() == SinkToolkit::chromium;
    for (auto const* const names : {"us,ru", "fr", "ru"}) {
        if (needsPlace && names == std::string("ru")) continue;
        if (!useLayouts(names)) GTEST_SKIP() << "there is no setxkbmap";
        client->useLayout(1);
        Typist typist(display->name(), pace);
        for (std::string const text : {"first", "второй"}) {
            typist.press(parseShortcut("cmd+a"));
            typist.type(text);
            eventually([&] { return sink->text() == text; });
            ASSERT_EQ(sink->text(), text) << names;
        }
    }
}

TEST_P(ToolkitInputTest, theWheelGoesAsFarAsAskedWithinHalfANotchAndSaysHowFar) {
    Pointer pointer(display->name());
    pointer.glide({300, 330}, 0.1);
    double at = 0;
    for (double const distance : {300.0, 1200.0, -500.0, 90.0}) {
        auto const scrolled = pointer.scroll({.down = distance});
        EXPECT_TRUE(scrolled.isSeen);
        EXPECT_FALSE(scrolled.isAtEnd);
        EXPECT_NEAR(scrolled.went.down, distance, halfNotch());
        EXPECT_NEAR(sink->scrolled("down"), at + scrolled.went.down, 3);
        at = sink->scrolled("down");
    }
    auto const up = pointer.scroll({.down = -20000});
    EXPECT_TRUE(up.isAtEnd);
    EXPECT_NEAR(up.went.down, -at, 3);
    EXPECT_TRUE(pointer.scroll({.down = -100}).isAtEnd);
    EXPECT_EQ(sink->scrolled("down"), 0);
}

TEST_P(ToolkitInputTest, aProgramThatDoesNotAnswerIsNotAtItsEnd) {
    if (GetParam() == SinkToolkit::chromium) GTEST_SKIP() << "its windows are another process's, which goes on";
    Pointer pointer(display->name());
    pointer.glide({300, 330}, 0.1);
    EXPECT_TRUE(pointer.scroll({.down = -100}).isAtEnd);
    sink->freeze();
    EXPECT_THAT([&] { pointer.scroll({.down = 300}); },
                ::testing::ThrowsMessage<AutomationError>(std::string(
                    "The application under the pointer does not answer, so nothing may have been scrolled.")));
}

TEST_P(ToolkitInputTest, theWheelGoesSidewaysToo) {
    Pointer pointer(display->name());
    pointer.glide({300, 330}, 0.1);
    auto const scrolled = pointer.scroll({.right = 250});
    EXPECT_NEAR(scrolled.went.right, 250, halfNotch());
    EXPECT_NEAR(sink->scrolled("right"), scrolled.went.right, 3);
}

INSTANTIATE_TEST_SUITE_P(Toolkits, ToolkitInputTest,
                         testing::Values(SinkToolkit::gtk3, SinkToolkit::gtk4, SinkToolkit::qt5, SinkToolkit::chromium),
                         [](auto const& parameter) {
                             std::string name(nameOf(parameter.param));
                             std::erase(name, ' ');
                             return name;
                         });

}
