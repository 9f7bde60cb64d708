#include <TavaroVoice/Script/ScriptPlan.h>

#include <gmock/gmock.h>

#include <fmt/format.h>

#include <random>

using namespace tavaro;
using ::testing::HasSubstr;

namespace {

/// "3.2 Here we go. | And on."
std::string drawn(std::string_view script) {
    std::string text;
    for (auto const& line : readScript(script))
        text += (text.empty() ? "" : " | ") + (line.time ? fmt::format("{:g} ", *line.time) : "") + line.text;
    return text;
}

std::string problem(std::string const& text) {
    try {
        readScript(text);
        return "";
    } catch (ScriptTextError const& error) {
        return error.what();
    }
}

}

TEST(ScriptText, linesBeginWithTheirTimesHoweverTheyAreWritten) {
    EXPECT_EQ(drawn("0:03.20  Here we go.\n[1:02:03]\tLater.\r\n(0:05,5) - Soon.\n0:06–0:07  Then.\n0:08: Last."),
              "3.2 Here we go. | 5.5 Soon. | 6 Then. | 8 Last. | 3723 Later.");
    EXPECT_EQ(drawn("0:01 One\n  goes on\nTwo follows\n\n---\n0:09\nThree, below its time"),
              "1 One goes on | Two follows | 9 Three, below its time");
    EXPECT_EQ(drawn("0:01 One\n0:02 🎉\n0:03 Three 🎉"), "1 One | 3 Three 🎉") << "nobody can say it";
    EXPECT_EQ(drawn("Meet me.\n10:30 is fine.\n"), "Meet me. | 10:30 is fine.")
        << "a script that does not begin with a time has none";
    EXPECT_EQ(drawn("3:1 odds."), "3:1 odds.");
    EXPECT_EQ(drawn("0:99 odds."), "0:99 odds.");
}

TEST(ScriptText, plainTextIsLinesOrParagraphs) {
    EXPECT_EQ(drawn("One.\nTwo.\n"), "One. | Two.");
    EXPECT_EQ(drawn("One is\nbroken.\n\nTwo   is\nnot."), "One is broken. | Two is not.");
    EXPECT_EQ(drawn(std::string_view("\xFF\xFEO\0k\0.\0", 8)), "Ok.") << "UTF-16";
    EXPECT_EQ(drawn("Caf\xE9 time"), "Café time") << "Windows-1252";
}

TEST(ScriptText, whatIsNoScriptIsRefusedWithASentence) {
    for (auto const* const text : {"", " \n\t\n", "---\n***\n", "###\n", "0:03\n0:04\n", "🎉\n✨ 🎉\n", "0:03 🎉\n"})
        EXPECT_EQ(problem(text), "There is no text to speak in it.") << text;
    EXPECT_THAT(problem("Short.\n" + std::string(10'001, 'a')), HasSubstr("line 2 to speak has more than 10000"));
    std::string many;
    for (int i = 0; i < 10'001; ++i) many += "a\n";
    EXPECT_EQ(problem(many), "A script has 10000 lines at most.");
}

TEST(ScriptText, aScriptComesBackAsItWasWritten) {
    static constexpr char const* texts[] = {"Now I fill in the details.", "- with a dash", "10:30 is fine.",
                                            "“Quoted” — 日本語", "[0:01] in brackets"};
    std::mt19937 random(1);
    for (int round = 0; round < 200; ++round) {
        std::vector<ScriptLine> lines;
        int hundredths = 0;
        for (auto n = 1 + random() % 8; n > 0; --n)
            lines.push_back({(hundredths += static_cast<int>(random() % 500'000)) / 100.0, texts[random() % 5]});
        auto const text = scriptText(lines);
        EXPECT_EQ(readScript(text), lines) << text;
    }
}

TEST(ScriptPlan, aLineThatStaysKeepsItsAudio) {
    VoiceoverPlan plan{.voice = {.voiceID = "system:slt"}};
    plan.segments = {{.text = "One.", .anchor = 0, .audioAsset = "1.m4a", .audioDuration = 4, .isDirty = false},
                     {.text = "Two.", .anchor = 5, .audioAsset = "2.m4a", .audioDuration = 1, .isDirty = false},
                     {.text = "Two.", .anchor = 7, .audioAsset = "3.m4a", .audioDuration = 1, .isDirty = false}};
    auto const after = plannedScript(plan, {{2.0, "Two."}, {2.5, "New."}, {3.0, "One."}, {{}, "Two."}, {{}, "Two."}});
    ASSERT_EQ(after.segments.size(), 5u);
    EXPECT_EQ(after.voice, plan.voice);
    EXPECT_EQ(after.segments[0].id, plan.segments[1].id);
    EXPECT_EQ(after.segments[2].audioAsset, "1.m4a");
    EXPECT_FALSE(after.segments[2].isDirty);
    EXPECT_EQ(after.segments[3].audioAsset, "3.m4a");
    for (auto const index : {1, 4}) {
        EXPECT_TRUE(after.segments[index].isDirty);
        EXPECT_EQ(after.segments[index].audioAsset, std::nullopt) << "no audio is used twice";
    }
    EXPECT_EQ(after.segments[1].anchor, 2.5);
    EXPECT_EQ(after.segments[1].start, 3) << "behind the line before";
    EXPECT_NEAR(after.segments[2].start, 3.4, 1e-9);
    EXPECT_NEAR(after.segments[3].start, 7.4, 1e-9) << "one without a time follows";
}

TEST(ScriptPlan, aLineThatACutMadeShortIsAsLongAsItsWordsAgain) {
    VoiceoverPlan plan;
    plan.segments = {{.text = "one two three", .audioDuration = 0.1}};
    auto const after = plannedScript(plan, {{0.0, "one two three"}, {{}, "then"}});
    EXPECT_NEAR(after.segments[1].start, 3 / 2.7, 1e-9);
}

TEST(ScriptPlan, plainLinesTakeThePlacesOfTheOnesBeforeOrAreSpread) {
    std::vector<ScriptLine> const lines{{{}, "one two three"}, {{}, "four five six"}, {{}, "seven eight nine"}};
    VoiceoverPlan plan;
    plan.segments = {{.text = "a", .anchor = 1}, {.text = "b"}, {.text = "c", .anchor = 8}};
    auto const replaced = timedLines(lines, plan, 30);
    EXPECT_EQ(replaced[0].time, 1);
    EXPECT_EQ(replaced[1].time, std::nullopt);
    EXPECT_EQ(replaced[2].time, 8);
    auto const spread = timedLines(lines, {}, 30);
    EXPECT_EQ(spread[0].time, 0);
    EXPECT_NEAR(*spread[1].time, 10, 1e-9);
    EXPECT_NEAR(*spread[2].time, 20, 1e-9);
    auto const crowded = timedLines(lines, {}, 2);
    EXPECT_NEAR(*crowded[1].time, 3 / 2.7, 1e-9);
    EXPECT_EQ(crowded[2].time, std::nullopt) << "no line is pinned behind the end of the film";
}
