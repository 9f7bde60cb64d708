#include "SpokenFilm.h"

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Captions/TranscriptCaptions.h>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <random>

using namespace tavaro;
using ::testing::ElementsAre;

namespace {

std::string drawn(std::vector<CaptionCue> const& cues) {
    std::string text;
    for (auto const& cue : cues) {
        text += fmt::format("[{:.4g} {} {:.4g}]", cue.start, cue.text, cue.range().end());
    }
    return text;
}

std::vector<std::string> texts(std::vector<CaptionCue> const& cues) {
    std::vector<std::string> result;
    for (auto const& cue : cues) result.push_back(cue.text);
    return result;
}

/// The words follow each other without a pause.
DemoProject said(std::vector<std::string> const& words) {
    std::vector<Said> list;
    for (auto const& word : words) {
        double const start = static_cast<double>(list.size());
        list.push_back({word, start, start + 1});
    }
    return spokenFilm(list);
}

DemoProject randomFilm(std::mt19937& random) {
    static std::vector<std::string> const vocabulary = {"a",      "to",      "click", "settings.",
                                                        "Um,",    "really?", "uhm",   "preview",
                                                        "größer", "go on",   "!",     "incomprehensibility"};
    std::vector<Said> words;
    double time = 0;
    for (std::size_t i = 0, count = random() % 60; i < count; ++i) {
        double const start = time + (random() % 4 == 0 ? 0.001 * static_cast<double>(random() % 3000) : 0.0);
        time = start + 0.05 + 0.001 * static_cast<double>(random() % 600);
        words.push_back({vocabulary[random() % vocabulary.size()], start, time});
    }
    return spokenFilm(words, time + 5);
}

CaptionCue const spoken{
    .start = 1, .duration = 4, .text = "one two\nthree", .words = {{"one", 1, 2}, {"two", 2.5, 3}, {"three", 3, 4}}};

}

TEST(CaptionsFromTranscript, fillersAloneMakeNone) {
    EXPECT_EQ(drawn(captionCuesFromTranscript(said({"Um,", "uh", "HMM."}))), "");
    EXPECT_EQ(drawn(captionCuesFromTranscript(said({"Um,", "so", "uh", "yes"}), {.breakOnPause = 1})), "[1 so yes 4]");
    EXPECT_EQ(drawn(captionCuesFromTranscript(DemoProject{})), "");
}

TEST(CaptionsFromTranscript, aSentenceClosesACueThatIsMoreThanAThirdFull) {
    EXPECT_THAT(texts(captionCuesFromTranscript(said({"Fourteen", "char.", "next"}))),
                ElementsAre("Fourteen char. next"));
    EXPECT_THAT(texts(captionCuesFromTranscript(said({"Fourteen", "chars.", "next"}))),
                ElementsAre("Fourteen chars.", "next"));
    EXPECT_THAT(
        texts(captionCuesFromTranscript(said({"What", "is", "this", "then?", "Oh", "my", "dear", "friend!", "so"}))),
        ElementsAre("What is this then?", "Oh my dear friend!", "so"));
}

TEST(CaptionsFromTranscript, aCueIsFilledUpToTheLimitInCharacters) {
    auto const film = said({"ñandú", "über", "alles"});
    EXPECT_THAT(texts(captionCuesFromTranscript(film, {.maxCharacters = 16})), ElementsAre("ñandú über alles"));
    EXPECT_THAT(texts(captionCuesFromTranscript(film, {.maxCharacters = 15})), ElementsAre("ñandú über", "alles"));
    EXPECT_THAT(texts(captionCuesFromTranscript(film, {.maxCharacters = -3})), ElementsAre("ñandú", "über", "alles"));
}

TEST(CaptionsFromTranscript, aPauseClosesACueAndTheGapIsStretchedByASecondAtMost) {
    auto const film = spokenFilm({{"one", 1, 2}, {"two", 2.8, 3}, {"three", 6, 7}, {"four", 7.4, 8}});
    EXPECT_EQ(drawn(captionCuesFromTranscript(film)), "[1 one two 4][6 three four 8]");
    EXPECT_EQ(drawn(captionCuesFromTranscript(film, {.breakOnPause = 0.3})),
              "[1 one 2.8][2.8 two 4][6 three 7.4][7.4 four 8]");
}

TEST(CaptionsFromTranscript, aPhraseSharesItsTimeAmongItsWords) {
    auto const cues = captionCuesFromTranscript(spokenFilm({{" going to ", 2, 3}, {"  ", 3, 4}}));
    ASSERT_EQ(cues.size(), 1u);
    EXPECT_EQ(cues[0].text, "going to");
    EXPECT_EQ(cues[0].words[1], (CaptionWord{"to", 2 + 5.0 / 7, 3}));
}

TEST(CaptionsFromTranscript, randomSpeechLosesNoWordAndKeepsTheLimit) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        auto const film = randomFilm(random);
        CaptionBreaks const breaks{.maxCharacters = static_cast<std::int64_t>(random() % 50), .breakOnPause = 0.5};
        std::vector<std::string> expected, found;
        for (auto const& word : (*film.transcript)->words) {
            if (word.isFiller()) continue;
            for (auto const each : writtenWords(word.text)) expected.emplace_back(each);
        }
        double until = 0;
        for (auto const& cue : captionCuesFromTranscript(film, breaks)) {
            EXPECT_GE(cue.start, until - 1e-9);
            until = cue.range().end();
            bool const fits = static_cast<std::int64_t>(lengthOf(cue.text)) <= breaks.maxCharacters;
            EXPECT_TRUE(fits || cue.words.size() == 1) << cue.text;
            for (std::size_t i = 0; i < cue.words.size(); ++i) {
                found.push_back(cue.words[i].text);
                double const pause = i > 0 ? cue.words[i].start - cue.words[i - 1].end : 0;
                EXPECT_LE(pause, 0.5 + 1e-9);
            }
        }
        EXPECT_EQ(found, expected);
    }
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
