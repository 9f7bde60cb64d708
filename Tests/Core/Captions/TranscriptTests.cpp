#include "SpokenFilm.h"

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Captions/TimelineWords.h>
#include <TavaroCore/Editing/TimelineEdits.h>

#include <fmt/format.h>
#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::ElementsAre;

namespace {

std::string drawn(std::vector<TimelineWord> const& words) {
    std::string text;
    for (auto const& [word, range, index] : words) {
        text += fmt::format("{}{} {:.4g}-{:.4g}", text.empty() ? "" : ", ", word.text, range.start, range.end());
    }
    return text;
}

std::string drawn(std::vector<TimeRange> const& ranges) {
    std::string text;
    for (auto const& range : ranges) text += fmt::format("[{:.4g} {:.4g}] ", range.start, range.end());
    return text;
}

bool isFiller(std::string const& text) { return TranscriptWord{.text = text}.isFiller(); }

}

TEST(Transcript, fillersAreRecognisedInAnyCaseAndPunctuation) {
    for (auto const* filler : {"Um,", "UMM.", "um", "ummm", "uh", "uhh", "uhm", "er", "erm", "ah", "ahh", "hmm", "hm",
                               "mm", "mmm", "mhm", " “Uh…” ", "—er—"}) {
        EXPECT_TRUE(isFiller(filler)) << filler;
    }
    for (auto const* word : {"umbrella", "u m", "", "...", "her", "ummmm", "mm-hm", "um um", "\xff"}) {
        EXPECT_FALSE(isFiller(word)) << word;
    }
    auto const film = spokenFilm({{"Um,", 0, 1}, {"hello", 1, 2}, {"HMM.", 2, 3}});
    auto const fillers = (*film.transcript)->fillerWords();
    ASSERT_EQ(fillers.size(), 2u);
    EXPECT_EQ(fillers[1].text, "HMM.");
    EXPECT_EQ((*film.transcript)->plainText(), "Um, hello HMM.");
}

TEST(Transcript, textIsMeasuredAndLoweredByUnicode) {
    EXPECT_EQ(bareText("«ÉCOLE»!"), "école");
    EXPECT_EQ(bareText("\u3000「ΣΊΣΥΦΟΣ」。"), "σίσυφος"); // the last sigma has a form of its own
    EXPECT_EQ(bareText("don’t?"), "don’t");
    EXPECT_EQ(bareText("$5.00."), "$5.00");
    EXPECT_EQ(lengthOf("a\u0301é🎬"), 4u); // a combining accent counts, an emoji is one
    EXPECT_EQ(lengthOf("a\xff\xfe"), 3u);
    EXPECT_THAT(writtenWords(" one\u00a0two\n\tthree\u3000"), ElementsAre("one", "two", "three"));
    EXPECT_THAT(writtenWords(" \n"), ElementsAre());
    EXPECT_THAT(brokenWord("thisisonelongword", 5), ElementsAre("thisisonelongword"));
    EXPECT_THAT(brokenWord("画面を録画します。", 4), ElementsAre("画面を", "録画し", "ます。"))
        << "no line begins with a full stop";
}

TEST(TimelineWords, areWhereTheEditShowsThem) {
    auto film = spokenFilm({{"one", 1, 2}, {"two", 3, 4}, {"three", 5, 6}, {"late", 70, 71}}, 10);
    EXPECT_EQ(drawn(timelineWords(film)), "one 1-2, two 3-4, three 5-6");
    film.timeline.clips = {{.start = 0, .sourceStart = 4.5, .duration = 1, .speed = 2},
                           {.start = 1, .sourceStart = 0, .duration = 4.5}};
    EXPECT_EQ(drawn(timelineWords(film)), "three 0.25-0.75, one 2-3, two 4-5") << "in the order of the film";
    EXPECT_EQ(timelineWords(film)[0].index, 2u);
    film.transcript.reset();
    EXPECT_TRUE(timelineWords(film).empty());
}

TEST(TimelineWords, aWordIsThereWhileHalfOfItIs) {
    auto const film = spokenFilm({{"word", 2, 3}}, 10);
    struct {
        double start, duration;
        char const* left;
    } const cuts[] = {{2.4, 3, ""},       {2.5, 3, "word 2-2.5"},   {1.5, 0.9, "word 1.5-2.1"},
                      {1.5, 1.1, ""},     {2.1, 0.3, "word 2-2.7"}, {2.1, 0.6, ""},
                      {0, 2, "word 0-1"}, {3, 4, "word 2-3"},       {2, 1, ""}};
    for (auto const& [start, duration, left] : cuts) {
        auto cut = film;
        removeTimeRange(cut, start, duration);
        EXPECT_EQ(drawn(timelineWords(cut)), left) << start << " + " << duration;
    }
    auto split = film;
    split.timeline.split(2.3);
    split.timeline.split(2.6);
    EXPECT_EQ(drawn(timelineWords(split)), "word 2-3") << "a split takes nothing away";
    split.timeline.clips[1].start = 20;
    split.timeline.closeGaps();
    EXPECT_EQ(drawn(timelineWords(split)), "") << "torn into thirds";
}

TEST(TimelineWords, wordsWithoutLengthOrSenseDoNoHarm) {
    auto film = spokenFilm({{"dot", 2, 2}, {"back", 4, 3}, {"before", -2, -1}, {"nan", std::nan(""), 1}}, 10);
    EXPECT_EQ(drawn(timelineWords(film)), "dot 2-2, back 4-4");
    removeTimeRange(film, 1, 2);
    EXPECT_EQ(drawn(timelineWords(film)), "back 2-2");
}

TEST(LongPauses, areTheSilencesAboveTheThreshold) {
    EXPECT_EQ(drawn(longPauses(spokenFilm({{"a", 1, 2}, {"b", 2.5, 3}, {"c", 3.75, 4}, {"d", 6, 7}}), 0.5)),
              "[3 3.75] [4 6] ");
    EXPECT_EQ(drawn(longPauses(spokenFilm({{"alone", 10, 11}}), 0.5)), "");
    EXPECT_EQ(drawn(longPauses(spokenFilm({{"long", 1, 5}, {"inside", 2, 3}, {"next", 6, 7}}), 0.5)), "[5 6] ")
        << "somebody is still speaking";
}
