#include "ScriptTake.h"

#include <TavaroVoice/Script/Private/ScriptSentences.h>

#include <TavaroCore/Editing/TimelineEdits.h>

#include <gmock/gmock.h>

#include <cmath>
#include <random>

using namespace tavaro;
using ::testing::HasSubstr;
using Style = AutoDirectorScript::Style;
using Kind = AutoDirectorScript::Beat::Kind;

namespace {

std::vector<AutoDirectorScript::Beat> beats(ScriptTake const& take, std::string const& product = "Geany",
                                            Style style = Style::demo) {
    return AutoDirectorScript{product, style}.beats(take.film());
}
std::string opening(ScriptTake const& take, std::string const& product) { return beats(take, product)[0].text; }

/// Anything that a person and a desktop may do.
ScriptTake randomTake(unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> unit(0, 1);
    double const seconds = std::pow(10, 3 * unit(random));
    ScriptTake take(seconds, allCases<DemoMode>()[random() % 6]);
    auto const count = random() % 60;
    for (unsigned i = 0; i < count; ++i) {
        double const t = seconds * 1.1 * unit(random);
        switch (random() % 5) {
        case 0: take.click(t, {unit(random), unit(random)}); break;
        case 1: take.drag(t, t + 5 * unit(random)); break;
        case 2: take.type(t, std::string(1 + random() % 40, 'x')); break;
        case 3: take.press(t, random() % 2 ? "⌃ S" : "⌘ Space"); break;
        default: take.app(t, t + 20 * unit(random), random() % 2 ? "Geany" : "Firefox"); break;
        }
    }
    if (random() % 2) removeTimeRange(take.project, seconds * unit(random) / 2, seconds / 4);
    return take;
}

}

TEST(AutoDirectorScript, eachActionHasALineWhenItHappens) {
    ScriptTake take(40);
    take.app(0, 30, "Geany").app(30, 40, "Firefox", "org.example.Web");
    take.click(5, {0.5, 0.1}).click(12, {0.1, 0.5}).type(17, "some words").drag(22, 24).press(25, "⌃ S");
    auto const script = beats(take);
    EXPECT_EQ(drawn(script), "opening@0 click@5 click@12 typing@17 drag@22 shortcut@25 appSwitch@30 closing@37.1");
    EXPECT_EQ(script[1].text, "Here I'm opening the top of the window.");
    EXPECT_EQ(script[2].text, "Now I select what I need from the left side.");
    EXPECT_EQ(script[5].text, "Control S does the same thing without leaving the keyboard.");
    EXPECT_EQ(script[6].text, "Now I switch over to Firefox.");
    EXPECT_EQ(script[1].position, (UnitPoint2{0.5, 0.1}));
    EXPECT_EQ(script[1].app, "Geany");
}

TEST(AutoDirectorScript, whatBelongsTogetherIsOneBeat) {
    EXPECT_EQ(drawn(beats(ScriptTake(20).click(5, {0.2, 0.2}).click(5.3, {0.2, 0.2}).click(6.5, {0.2, 0.2}))),
              "opening@0 click@5 closing@17.1")
        << "a double click, and the next in its place";
    EXPECT_EQ(drawn(beats(ScriptTake(20).click(5, {0.2, 0.2}).type(6, "a name\n").press(7.5, "⌃ ⌫").type(7.8, "more"))),
              "opening@0 typing@5 closing@17.1")
        << "a field is clicked to type in it";
    EXPECT_EQ(drawn(beats(ScriptTake(20).drag(4, 5).drag(6, 8).drag(9, 11))), "opening@0 drag@4 closing@17.1")
        << "strokes of a drawing";
    EXPECT_EQ(drawn(beats(ScriptTake(20).app(0, 6, "Geany").app(6, 20, "Files").press(5.5, "⌥ ⇥").click(6.1, {}))),
              "opening@0 appSwitch@5.5 closing@17.1")
        << "the shortcut that switches, and the click into the window";
    EXPECT_EQ(drawn(beats(ScriptTake(20).type(5, "y").press(8, "⌃ Z").press(9, "⌃ Z").press(10, "⌃ Z"))),
              "opening@0 shortcut@8 closing@17.1")
        << "one key is no typing";
}

TEST(AutoDirectorScript, aLineIsSpokenBeforeTheNextAndWhatIsWorthMoreIsKept) {
    EXPECT_EQ(drawn(beats(ScriptTake(20).click(5, {}).click(6.5, {}).click(9, {}))),
              "opening@0 click@5 click@9 closing@17.1");
    EXPECT_EQ(drawn(beats(ScriptTake(20).app(0, 8, "Geany").app(8, 20, "Files").click(6, {0.2, 0.2}))),
              "opening@0 appSwitch@8 closing@17.1")
        << "the click's line would go on while the application changes";
    EXPECT_EQ(drawn(beats(ScriptTake(20).click(1.8, {0.2, 0.2}))), "opening@0 click@2.36 closing@17.1")
        << "a line may come a moment late";
    EXPECT_EQ(drawn(beats(ScriptTake(20).click(1, {0.2, 0.2}))), "opening@0 closing@17.1") << "but not any later";
}

TEST(AutoDirectorScript, onlyWhatTheEditShowsIsToldWhereItIsShown) {
    ScriptTake take(60);
    take.click(10, {0.5, 0.1}).click(20, {0.5, 0.1}).click(40, {0.9, 0.9});
    removeTimeRange(take.project, 15, 10);
    EXPECT_EQ(drawn(beats(take)), "opening@0 opening@2.36 click@10 click@30 closing@47.1");

    ScriptTake fast(60);
    fast.click(40, {0.5, 0.1});
    fast.project.timeline.clips[0].speed = 2;
    fast.project.timeline.clips[0].duration = 30;
    EXPECT_THAT(drawn(beats(fast)), HasSubstr("click@20 "));

    ScriptTake cropped(20);
    cropped.click(5, {0.1, 0.1}).click(10, {0.6, 0.6});
    cropped.project.sourceCrop = NormalizedRect{0.5, 0.5, 0.5, 0.5};
    auto const script = beats(cropped);
    EXPECT_EQ(drawn(script), "opening@0 opening@2.36 click@10 closing@17.1");
    EXPECT_EQ(script[2].text, "Here I'm opening the top left of the window.") << "of what the crop leaves";
}

TEST(AutoDirectorScript, typingIsToldByWhatItIsUnlessThatWasSaidBefore) {
    auto const script =
        beats(ScriptTake(60).type(6, "moss\n").type(14, "Anna\tBerger").type(24, "42").type(33, "43").type(41, "x12"));
    ASSERT_EQ(drawn(script), "opening@0 typing@6 typing@14 typing@41 closing@57.1");
    EXPECT_EQ(script[1].text, "I type in what I'm looking for.");
    EXPECT_EQ(script[2].text, "Now I fill in the details.");
    EXPECT_EQ(script[3].text, "I enter the value here.");
}

TEST(AutoDirectorScript, repeatedLinesAreReworded) {
    auto const script = beats(ScriptTake(60).press(6, "⌃ C").press(15, "⌃ C").press(20, "⌃ V").press(25, "⌃ V"));
    ASSERT_EQ(drawn(script), "opening@0 shortcut@6 shortcut@15 shortcut@20 shortcut@25 closing@57.1");
    EXPECT_EQ(script[2].text, "And Control C once more.");
    EXPECT_EQ(script[3].text, "Next comes Control V.");
    EXPECT_EQ(script[4].text, "And Control V once more.");
}

TEST(AutoDirectorScript, theProductIsTheDemonstratedApplicationUnlessItIsNamed) {
    ScriptTake take(20);
    take.app(0, 9, "Tavaro", "com.tavaro.app").app(9, 13, "Geany").app(13, 14, "Files");
    EXPECT_EQ(opening(take, ""), "Let me show you Geany.");
    EXPECT_EQ(opening(take, " This "), "Let me show you Geany.");
    EXPECT_EQ(opening(take, "  Mossfile\n2 "), "Let me show you Mossfile 2.");
    EXPECT_EQ(opening(ScriptTake(20), ""), "Let me show you this app.");
    EXPECT_EQ(drawn(beats(take)), "opening@0 opening@2.36 appSwitch@13 closing@17.1")
        << "Tavaro is no application of the film";
    take.project.mode = DemoMode::dashboard;
    take.project.metadata.edit().appSpans = {{0, 20, "firefox", "Firefox"}};
    EXPECT_EQ(opening(take, ""), "This is the dashboard.") << "that it is shown in a browser is not the point";
    ScriptTake clicked(20);
    clicked.project.metadata.edit().clicks = {{.t = 5, .application = "Geany"}};
    EXPECT_EQ(opening(clicked, ""), "Let me show you Geany.");
}

TEST(AutoDirectorScript, filmsOfAnyLengthGetAScript) {
    EXPECT_TRUE(beats(ScriptTake(0)).empty());
    EXPECT_EQ(drawn(beats(ScriptTake(1))), "opening@0");
    EXPECT_EQ(drawn(beats(ScriptTake(4))), "opening@0") << "two lines in a hurry would be none";
    EXPECT_EQ(drawn(beats(ScriptTake(5))), "opening@0 closing@2.35");
    EXPECT_EQ(drawn(beats(ScriptTake(30))), "opening@0 opening@2.36 closing@27.1") << "nothing happens";
    EXPECT_EQ(drawn(beats(ScriptTake(300))), "opening@0 closing@297.1") << "which takes more than a few seconds";
}

TEST(AutoDirectorScript, anyTakeGivesLinesThatCanBeSpokenInTheFilm) {
    int lines = 0;
    for (unsigned seed = 0; seed < 400; ++seed) {
        SCOPED_TRACE(seed);
        auto const take = randomTake(seed);
        auto const style = allCases<Style>()[seed % 5];
        auto const script = beats(take, seed % 3 ? "" : "Geany", style);
        double const duration = take.project.duration();
        double free = 0;
        for (std::size_t i = 0; i < script.size(); ++i) {
            auto const& beat = script[i];
            EXPECT_GE(beat.time, free);
            free = beat.time + sentences::spokenSeconds(beat.text);
            EXPECT_TRUE(free <= duration + 1e-9 || script.size() == 1) << beat.text;
            EXPECT_TRUE(i == 0 || beat.text != script[i - 1].text) << beat.text;
            EXPECT_FALSE(beat.text.empty());
        }
        EXPECT_EQ(drawn(script), drawn(beats(take, seed % 3 ? "" : "Geany", style)));
        lines += static_cast<int>(script.size());
    }
    EXPECT_GT(lines, 2000);
}
