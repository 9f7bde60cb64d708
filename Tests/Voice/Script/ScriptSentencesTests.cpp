#include <TavaroVoice/Script/Private/ScriptSentences.h>

#include <gtest/gtest.h>

#include <set>

using namespace tavaro;
using Style = AutoDirectorScript::Style;

TEST(ScriptSentences, aClickIsNamedByItsThirdOfThePicture) {
    EXPECT_EQ(sentences::region({0.5, 0.1}), "top");
    EXPECT_EQ(sentences::region({0.1, 0.5}), "left side");
    EXPECT_EQ(sentences::region({0.5, 0.5}), "centre");
    EXPECT_EQ(sentences::region({0.9, 0.9}), "bottom right");
    EXPECT_EQ(sentences::region({0.2, 0.1}), "top left");
    EXPECT_EQ(sentences::region({0.33, 0.33}), "centre") << "its edges belong to the middle";
    EXPECT_EQ(sentences::region({0.66, 0.66}), "centre");
    EXPECT_EQ(sentences::region({0.67, 0.32}), "top right");
}

TEST(ScriptSentences, clicksTakeTheirEightLinesInTurn) {
    EXPECT_EQ(sentences::click(0, {0.5, 0.1}), "Here I'm opening the top of the window.");
    EXPECT_EQ(sentences::click(1, {0.9, 0.9}), "Now I select what I need from the bottom right.");
    EXPECT_EQ(sentences::click(4, {0.1, 0.5}), "Then I head over to the left side.");
    EXPECT_EQ(sentences::click(7, {0.5, 0.5}), "Over in the centre, I choose what's next.");
    for (std::size_t n = 0; n < 8; ++n) EXPECT_EQ(sentences::click(n + 8, {0.5, 0.1}), sentences::click(n, {0.5, 0.1}));
    std::set<std::string> lines;
    for (std::size_t n = 0; n < 8; ++n) lines.insert(sentences::click(n, {0.5, 0.5}));
    EXPECT_EQ(lines.size(), 8u);
}

TEST(ScriptSentences, openingAndClosingFollowStyleAndMode) {
    EXPECT_EQ(sentences::opening(Style::demo, DemoMode::website, "Geany"), "Here's a quick walkthrough of Geany.");
    EXPECT_EQ(sentences::opening(Style::demo, DemoMode::desktopApp, "Geany"), "Let me show you Geany.");
    EXPECT_EQ(sentences::opening(Style::demo, DemoMode::mobileApp, "Geany"),
              "Let's take a look at Geany on the phone.");
    EXPECT_EQ(sentences::opening(Style::demo, DemoMode::dashboard, "Geany"), "This is the Geany dashboard.");
    EXPECT_EQ(sentences::opening(Style::demo, DemoMode::terminal, "Geany"),
              "Let me show you how Geany works from the terminal.");
    EXPECT_EQ(sentences::opening(Style::launch, DemoMode::website, "Geany"),
              "Geany is live today. Here's what it does.");
    EXPECT_EQ(sentences::closing(Style::launch, DemoMode::website, "Geany"),
              "Geany is available now — the link is below.");
    EXPECT_EQ(sentences::closing(Style::demo, DemoMode::terminal, "Geany"), "And that's the whole flow, end to end.");
    EXPECT_EQ(sentences::closing(Style::demo, DemoMode::dashboard, "Geany"), "And that's all there is to it.");
    for (auto const mode : allCases<DemoMode>())
        EXPECT_EQ(sentences::opening(Style::social, mode, "Geany").find("Geany"), std::string::npos);
}

TEST(ScriptSentences, aProductWithoutANameStillReadsWell) {
    for (auto const style : allCases<Style>()) {
        for (auto const mode : allCases<DemoMode>()) {
            for (auto const& line : {sentences::opening(style, mode, {}), sentences::closing(style, mode, {})}) {
                EXPECT_EQ(line.find("  "), std::string::npos) << line;
                EXPECT_TRUE(line.front() >= 'A' && line.front() <= 'Z') << line;
                EXPECT_EQ(line.find("the this"), std::string::npos) << line;
            }
        }
    }
    EXPECT_EQ(sentences::opening(Style::demo, DemoMode::dashboard, {}), "This is the dashboard.");
    EXPECT_EQ(sentences::opening(Style::launch, DemoMode::website, {}),
              "This site is live today. Here's what it does.");
}

TEST(ScriptSentences, keysAreSaidAsWords) {
    std::vector<std::string> const save{"⌃", "⇧", "p"}, out{"⌘", "-"};
    EXPECT_EQ(sentences::shortcut(save), "Control Shift P does the same thing without leaving the keyboard.");
    EXPECT_EQ(sentences::shortcutName(out), "Super Minus");
}
