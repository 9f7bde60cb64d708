#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Speech/VoiceoverCaptions.h>

#include <gtest/gtest.h>

#include <fmt/format.h>

namespace tavaro {

namespace {

std::string drawn(std::vector<CaptionWord> const& words) {
    std::string text;
    for (auto const& [word, start, end] : words)
        text += fmt::format("{}{}[{:g}-{:g}]", text.empty() ? "" : " ", word, start, end);
    return text;
}

TEST(VoiceoverCaptions, wordsHaveTheTimesThatTheVoiceTold) {
    EXPECT_EQ(drawn(wordsAsSaid("Now, save it.", {1, 2}, {{"now", 1, 1.25}, {"save", 1.5, 2}, {"it", 2, 2.5}})),
              "Now,[1-1.25] save[1.5-2] it.[2-2.5]");
}

TEST(VoiceoverCaptions, wordsThatTheVoiceSaysOtherwiseShareWhatIsLeftBetweenTheOthers) {
    EXPECT_EQ(drawn(wordsAsSaid("Save 42 files", {0, 4},
                                {{"save", 0, 1}, {"forty", 1, 1.5}, {"two", 1.5, 2}, {"files", 2, 3}})),
              "Save[0-1] 42[1-2] files[2-3]");
    EXPECT_EQ(drawn(wordsAsSaid("e-mail it", {0, 4}, {{"e", 0.5, 0.75}, {"mail", 0.75, 1.5}, {"it", 1.5, 2}})),
              "e-mail[0.5-1.5] it[1.5-2]");
    EXPECT_EQ(drawn(wordsAsSaid("ab abcdef", {2, 4}, {})), "ab[2-3] abcdef[3-6]");
    EXPECT_EQ(drawn(wordsAsSaid("", {2, 4}, {{"hm", 2, 3}})), "");
}

TEST(VoiceoverCaptions, wordsNeverRunBackwardsOrOutOfTheLineWhateverTheVoiceTold) {
    std::vector<CaptionWord> const said{{"b", 5, 6}, {"a", 1, 0.5}, {"b", -3, 90}, {"c", 2, 2}};
    double before = 0;
    for (auto const& word : wordsAsSaid("a b b c d", {1, 3}, said)) {
        EXPECT_GE(word.start, before);
        EXPECT_GE(word.end, word.start);
        EXPECT_LE(word.end, 90);
        before = word.end;
    }
}

TEST(VoiceoverCaptions, goWithTheLinesAndAsFastAsThesePlay) {
    DemoProject project;
    project.assetDurations["a.caf"] = 4;
    auto& lines = project.voiceover.emplace().segments;
    lines.push_back({.text = "Later.", .start = 20});
    lines.push_back({.text = "Save it now.", .audioAsset = "a.caf", .audioDuration = 2, .start = 10, .isDirty = false});
    auto const said = [](std::string const& asset) {
        return asset == "a.caf" ? std::vector<CaptionWord>{{"save", 0, 1}, {"it", 1, 2}, {"now", 3, 4}}
                                : std::vector<CaptionWord>{};
    };
    auto const cues = captionCuesFromVoiceover(project, said);
    ASSERT_EQ(cues.size(), 2u);
    EXPECT_EQ(drawn(cues[0].words), "Save[10-10.5] it[10.5-11] now.[11.5-12]");
    EXPECT_EQ(cues[1].text, "Later.");
    EXPECT_EQ(cues[1].start, 20);
}

}

}
