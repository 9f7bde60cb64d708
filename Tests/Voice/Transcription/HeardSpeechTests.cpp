#include <TavaroVoice/Transcription/Private/HeardSpeech.h>

#include <TavaroCore/Captions/SpeechEnvelope.h>

#include <gtest/gtest.h>

namespace tavaro {

namespace {

SpeechPiece pieceOf(double start, double from, double to, float level = 0.1F) {
    return {.sound = {},
            .start = start,
            .from = from,
            .to = to,
            .levels = std::vector<float>(static_cast<std::size_t>((to - start) * 50), level)};
}

}

TEST(HeardSpeech, aWordAtTheEdgeOfTwoPiecesIsThereOnce) {
    HeardSpeech speech;
    // Said from 9.9 to 10.3; the sound is cut at 10, and both pieces have it whole.
    speech.add(wordsIn(pieceOf(0, 0, 10), {{"before", 9, 9.5, 0.9F}, {"edge", 9.9, 10.3, 0.9F}}, 0));
    speech.add(wordsIn(pieceOf(9.5, 10, 20), {{"edge", 0.4, 0.8, 0.8F}, {"after", 1, 1.5, 0.9F}}, 0));
    EXPECT_EQ(speech.transcript("en-US").plainText(), "before edge after");
    // Each piece thinks that the word is its own.
    HeardSpeech twice;
    twice.add(wordsIn(pieceOf(0, 0, 10), {{"edge", 9.6, 10.3, 0.9F}}, 0));
    twice.add(wordsIn(pieceOf(9.5, 10, 20), {{"edge", 0.3, 0.8, 0.8F}}, 0));
    EXPECT_EQ(twice.transcript("en-US").plainText(), "edge");
}

TEST(HeardSpeech, wordsHaveTheRecordingsTimes) {
    auto const words = wordsIn(pieceOf(60, 60, 90), {{"now", 2, 2.4, 0.9F}}, -1.5);
    ASSERT_EQ(words.size(), 1U);
    EXPECT_DOUBLE_EQ(words[0].start, 60.5);
    EXPECT_DOUBLE_EQ(words[0].end, 60.9);
    EXPECT_TRUE(wordsIn(pieceOf(0, 0, 30), {{"early", 0.2, 0.9, 0.9F}}, -1.5).empty()) << "said before the recording";
}

TEST(HeardSpeech, soundWithoutWordsIsUnrecognised) {
    HeardSpeech speech;
    auto piece = pieceOf(0, 0, 10);
    for (std::size_t i = 200; i < 300; ++i) piece.levels[i] = 0.001F; // silent from 4 to 6 s
    speech.addLevels(piece, 2);
    speech.add({{.text = "said", .start = 2, .end = 5.9, .confidence = 1}});
    auto const sounds = speech.transcript("en-US").unrecognisedSounds;
    ASSERT_EQ(sounds.size(), 1U);
    EXPECT_NEAR(sounds[0].start, 8, 0.06);
    EXPECT_NEAR(sounds[0].end(), 12, 0.06);
}

TEST(SpeechEnvelope, levelsComeBackAsLoudAsTheyWere) {
    SpeechEnvelope const envelope{.levels = {0, 1, 0.5F, 0.018F, 0.0001F}};
    auto const back = SpeechEnvelope::unpacked(envelope.packed());
    ASSERT_TRUE(back);
    EXPECT_EQ(back->rate, envelope.rate);
    ASSERT_EQ(back->levels.size(), envelope.levels.size());
    for (std::size_t i = 0; i < back->levels.size(); ++i)
        EXPECT_NEAR(back->levels[i], envelope.levels[i], 0.03F * envelope.levels[i]) << i;
    for (auto const& bytes : {std::vector<std::uint8_t>{}, {'S', 'E', '1'}, {'S', 'E', '1', 0, 7}, {'x', 'E', '1', 9}})
        EXPECT_FALSE(SpeechEnvelope::unpacked({bytes}));
}

}
