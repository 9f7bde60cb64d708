#include <TavaroVoice/Transcription/Private/SpeechCutter.h>

#include "SpokenTake.h"

#include <TavaroMedia/Audio/StereoSample.h>
#include <TavaroVoice/Transcription/Private/HeardSpeech.h>
#include <TavaroVoice/Transcription/Private/Recogniser.h>

#include <gtest/gtest.h>

#include <cmath>

namespace tavaro {

namespace {

std::vector<SpeechPiece> piecesOf(MonoSound const& sound, double most, std::size_t fedAtOnce) {
    std::vector<SpeechPiece> pieces;
    SpeechCutter cutter(most, [&](SpeechPiece piece) { pieces.push_back(std::move(piece)); });
    for (std::size_t i = 0; i < sound.samples.size(); i += fedAtOnce)
        cutter.feed(std::span(sound.samples).subspan(i, std::min(fedAtOnce, sound.samples.size() - i)));
    cutter.finish();
    return pieces;
}

}

TEST(SpeechCutter, piecesFollowEachOtherWithoutAGapAndNoneLastsLongerThanItMay) {
    for (double const seconds : {0.0, 0.3, 9.9, 10.0, 10.6, 47.3}) {
        for (std::size_t const fed : {std::size_t{777}, std::size_t{audioRate} * 60}) {
            auto const pieces = piecesOf(humming(seconds), 10, fed);
            double end = 0;
            for (auto const& piece : pieces) {
                EXPECT_DOUBLE_EQ(piece.from, end);
                EXPECT_LE(piece.to - piece.from, 10.6);
                EXPECT_LE(piece.start, piece.from);
                double const held = static_cast<double>(piece.sound.samples.size()) / speechRate;
                EXPECT_NEAR(held, std::max(held, piece.to - piece.start), 0.001) << "all of it is in the piece's sound";
                end = piece.to;
            }
            EXPECT_NEAR(end, seconds, 0.001) << seconds;
        }
    }
}

TEST(SpeechCutter, soundIsCutWhereNobodySpeaks) {
    auto const pieces = piecesOf(humming(60), 10, 4096); // silent from 2 to 2.5 s of each 2.5
    ASSERT_GT(pieces.size(), 5U);
    for (std::size_t i = 0; i + 1 < pieces.size(); ++i) {
        double const place = std::fmod(pieces[i].to, 2.5);
        EXPECT_GT(place, 2.05) << pieces[i].to;
        EXPECT_LT(place, 2.45) << pieces[i].to;
    }
}

TEST(SpeechCutter, silenceAndSteadyNoiseAreNotListenedTo) {
    EXPECT_FALSE(maySpeak(piecesOf(silent(8), 10, 4096)[0]));
    EXPECT_FALSE(maySpeak(piecesOf(hiss(8, 0.3F), 10, 4096)[0]));
    EXPECT_TRUE(maySpeak(piecesOf(humming(8), 10, 4096)[0]));
    auto inNoise = humming(8);
    auto const noise = hiss(8, 0.1F);
    for (std::size_t i = 0; i < inNoise.samples.size(); ++i) inNoise.samples[i] += noise.samples[i];
    EXPECT_TRUE(maySpeak(piecesOf(inNoise, 10, 4096)[0]));
}

}
