#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Speaking/Private/SpokenText.h>

#include <gtest/gtest.h>

#include <random>

namespace tavaro {

namespace {

/// The phrases, with a bar between.
std::string spoken(std::string const& text, Letters letters = Letters::ascii) {
    std::string all;
    for (auto const& phrase : spokenPhrases(text, letters)) all += (all.empty() ? "" : "|") + spokenText(phrase);
    return all;
}

}

TEST(SpokenText, isSentencesOfWordsThatEnginesKnow) {
    EXPECT_EQ(spoken("Open it. Then  close\nit!"), "Open it.|Then close it!");
    EXPECT_EQ(spoken("Mr. Smith has 3.5 files. e.g. these. and more"), "Mr. Smith has 3.5 files. e.g. these. and more");
    EXPECT_EQ(spoken("Привет “world” – it’s naïve…"), "Privet world, it's naive...");
    EXPECT_EQ(spoken("say <break time=\"3s\"/> [[x]] (now)"), "say break time=-3s/ x now");
    EXPECT_EQ(spoken("Öl für “alle” 🎉", Letters::all), "Öl für alle");
    auto const words = spokenPhrases("(Привет) 🎉 —", Letters::ascii);
    EXPECT_EQ(words, (std::vector<SpokenPhrase>{{{"(Привет)", "Privet,"}}}));
    EXPECT_THROW(spoken(std::string(mostSpokenCharacters + 1, 'a')), VoiceError);
    EXPECT_EQ(spokenPhrases(std::string(mostSpokenCharacters, 'a'), Letters::ascii)[0][0].spoken.size(), 60u);
}

TEST(SpokenText, hasNothingThatAnEngineCouldObey) {
    std::mt19937 random(7);
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        for (auto left = random() % 60; left > 0; --left) text += static_cast<char>(random() % (round % 2 ? 256 : 128));
        for (auto const letters : {Letters::ascii, Letters::all}) {
            std::string made;
            try {
                made = spoken(text, letters);
            } catch (VoiceError const& error) {
                EXPECT_EQ(error.kind, VoiceError::Kind::nothingToSay);
            }
            EXPECT_TRUE(letters == Letters::ascii || canBeSaid(text) == !made.empty()) << text;
            EXPECT_EQ(made.find_first_of("\"\\()[]{}<>`^~\n\r\x1b"), std::string::npos) << text;
            EXPECT_EQ(made.find('\0'), std::string::npos) << text;
            for (unsigned char const c : made) EXPECT_TRUE(c >= 0x20 && (c < 0x7F || letters == Letters::all)) << text;
        }
    }
}

}
