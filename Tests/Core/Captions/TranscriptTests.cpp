#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Captions/Transcript.h>

#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::ElementsAre;

namespace {

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
    Transcript const transcript{.words = {{.text = "Um,"}, {.text = "hello"}, {.text = "HMM."}}};
    auto const fillers = transcript.fillerWords();
    ASSERT_EQ(fillers.size(), 2u);
    EXPECT_EQ(fillers[1].text, "HMM.");
    EXPECT_EQ(transcript.plainText(), "Um, hello HMM.");
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
