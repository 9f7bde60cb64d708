#include "SpokenFilm.h"

#include <TavaroCore/Editing/TimelineEdits.h>
#include <TavaroCore/Speech/TimelineWords.h>

#include <fmt/format.h>
#include <gtest/gtest.h>

using namespace tavaro;

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

}

TEST(TimelineWords, areWhereTheEditShowsThem) {
    auto film = spokenFilm({{"one", 1, 2}, {"two", 3, 4}, {"three", 5, 6}, {"late", 70, 71}}, 10);
    EXPECT_EQ(drawn(timelineWords(film)), "one 1-2, two 3-4, three 5-6");
    film.timeline.clips = {{.start = 0, .sourceStart = 4.5, .duration = 1, .speed = 2},
                           {.start = 1, .sourceStart = 0, .duration = 4.5}};
    EXPECT_EQ(drawn(timelineWords(film)), "three 0.25-0.75, one 2-3, two 4-5") << "in the order of the film";
    EXPECT_EQ(timelineWords(film)[0].index, 2u);
    film.timeline.clips[0].asset = film.timeline.clips[1].asset = "screen.mp4";
    film.timeline.clips.push_back({.asset = "screen.mp4", .start = 5.5, .sourceStart = 0.5, .duration = 2});
    film.timeline.clips.push_back({.asset = "other.mp4", .start = 7.5, .sourceStart = 0.5, .duration = 2});
    EXPECT_EQ(drawn(timelineWords(film)), "three 0.25-0.75, one 2-3, two 4-5, one 6-7")
        << "what is shown again is said again; nothing is said over another movie";
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
    EXPECT_EQ(drawn(timelineWords(split)), "word 2-2.7") << "as after a cut; the third shown later is too little";
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
