#include <TavaroCore/Captions/CaptionTrack.h>
#include <TavaroCore/Captions/SpokenText.h>

#include <gmock/gmock.h>
#include <random>

using namespace tavaro;
using ::testing::ElementsAre;

namespace {

std::vector<std::string> texts(std::vector<CaptionCue> const& cues) {
    std::vector<std::string> result;
    for (auto const& cue : cues) result.push_back(cue.text);
    return result;
}

CaptionCue const spoken{
    .start = 1, .duration = 4, .text = "one two\nthree", .words = {{"one", 1, 2}, {"two", 2.5, 3}, {"three", 3, 4}}};

}

TEST(CaptionTrack, theCueIsTheOneAtThatTime) {
    CaptionTrack track;
    track.cues = {{.start = 1, .duration = 2, .text = "a"}, {.start = 2, .duration = 2, .text = "b"}};
    EXPECT_EQ(track.cue(0.999), nullptr);
    EXPECT_EQ(track.cue(1)->text, "a");
    EXPECT_EQ(track.cue(2.5)->text, "b") << "the one that is drawn on top";
    EXPECT_EQ(track.cue(4), nullptr);
}

TEST(CaptionTrack, revealedByWordTheTextGrowsAsItIsSpoken) {
    CaptionTrack track;
    EXPECT_EQ(track.visibleText(spoken, 1), spoken.text);
    track.reveal = CaptionReveal::word;
    EXPECT_EQ(track.visibleText(spoken, 0.9), "");
    EXPECT_EQ(track.visibleText(spoken, 1), "one");
    EXPECT_EQ(track.visibleText(spoken, 2.9), "one two");
    EXPECT_EQ(track.visibleText(spoken, 3), spoken.text);

    auto corrected = spoken;
    corrected.text = "One, two – three!";
    EXPECT_EQ(track.visibleText(corrected, 1.5), "One,") << "four written words share the time of the cue";
    corrected.text = "Wann zwei drei";
    EXPECT_EQ(track.visibleText(corrected, 2.6), "Wann zwei") << "as many words keep their times";
    corrected.words.clear();
    EXPECT_EQ(track.visibleText(corrected, 1 + 4 * 4.0 / 12), "Wann zwei");
}

TEST(CaptionsFromScript, fillTheLimitAndShareTheTimeByTheirCharacters) {
    auto const cues = CaptionTrack::cuesFromScript(" Click the\n red button. Then wait ", 10, 8, 16);
    EXPECT_THAT(texts(cues), ElementsAre("Click the red", "button. Then", "wait"));
    double const second = 8.0 / (13 + 12 + 4);
    EXPECT_DOUBLE_EQ(cues[1].start, 10 + 13 * second);
    EXPECT_DOUBLE_EQ(cues[2].start, 10 + 25 * second);
    EXPECT_DOUBLE_EQ(cues[2].range().end(), 18);
    EXPECT_EQ(cues[1].words.size(), 2u);
    EXPECT_EQ(cues[1].words.front().start, cues[1].start);
    EXPECT_EQ(cues[1].words.back().end, cues[1].range().end());
    EXPECT_TRUE(CaptionTrack::cuesFromScript(" \n ", 0, 5).empty());
    EXPECT_TRUE(CaptionTrack::cuesFromScript("text", 0, 0).empty());
}

TEST(CaptionsFromScript, scriptsWithoutBlanksBreakBetweenWords) {
    EXPECT_THAT(texts(CaptionTrack::cuesFromScript("画面を録画します。次に編集します。 OK", 0, 8, 10)),
                ElementsAre("画面を録画します。", "次に編集します。", "OK"));
    EXPECT_THAT(texts(CaptionTrack::cuesFromScript("an incomprehensible word", 0, 8, 5)),
                ElementsAre("an", "incomprehensible", "word"));
}

TEST(CaptionsFromScript, anyTextComesBackWholeWithinTheSpan) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        std::string script;
        for (auto count = random() % 200; count > 0; --count) {
            static std::vector<std::string> const pieces = {"a",  "bc", " ", "  ",   "\n", "é",
                                                            "画", "。", "-", "\xff", "🎬"};
            script += pieces[random() % pieces.size()];
        }
        auto const maxLength = static_cast<std::int64_t>(1 + random() % 20);
        std::string letters, found;
        for (auto const word : writtenWords(script)) letters += word;
        double until = 3;
        auto const cues = CaptionTrack::cuesFromScript(script, 3, 7, maxLength);
        for (auto const& cue : cues) {
            EXPECT_NEAR(cue.start, until, 1e-9);
            until = cue.range().end();
            for (auto const word : writtenWords(cue.text)) found += word;
            auto const parts = spokenParts(cue);
            EXPECT_EQ(parts.size(), cue.words.size());
            for (std::size_t i = 0; i < parts.size(); ++i) EXPECT_EQ(parts[i].start, cue.words[i].start);
        }
        EXPECT_EQ(found, letters);
        EXPECT_NEAR(until, cues.empty() ? 3 : 10, 1e-9);
    }
}
