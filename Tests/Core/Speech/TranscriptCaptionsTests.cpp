#include "SpokenFilm.h"

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Speech/TranscriptCaptions.h>

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
