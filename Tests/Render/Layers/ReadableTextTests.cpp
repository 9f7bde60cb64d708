#include <TavaroRender/Layers/Private/ReadableText.h>

#include <random>

#include <gmock/gmock.h>

#include <TavaroRender/Layers/Private/CodeTokens.h>
#include <TavaroRender/Layers/Private/SpokenCaption.h>

namespace tavaro {

TEST(ReadableText, keepsWhatCanBeReadAndReplacesWhatCannot) {
    EXPECT_EQ(readableText("a\tb\r\nc\rd\x07", 100), "a    b\nc\nd");
    EXPECT_EQ(readableText("a\r\nb", 100, LineBreaks::toSpaces), "a b");
    EXPECT_EQ(readableText("x\xFFy\xC3", 100), "x\xEF\xBF\xBDy\xEF\xBF\xBD");
    EXPECT_EQ(readableText("日本語", 2), "日本…");
    EXPECT_EQ(readableText("👩‍💻", 100), "👩‍💻"); // its joiner is no control character
}

TEST(ReadableText, countsWhatAReaderCallsACharacter) {
    EXPECT_EQ(graphemesOf("e\xCC\x81👩‍💻🇩🇪"), 3);
    EXPECT_EQ(bytesOfGraphemes("e\xCC\x81x", 1), 3u);
    EXPECT_EQ(bytesOfGraphemes("abc", 99), 3u);
    EXPECT_EQ(bytesOfGraphemes("abc", -1), 0u);
}

TEST(CodeTokens, coverAnyTextWithoutGaps) {
    std::mt19937 random(20240607);
    std::string const alphabet = "ab1 \n\"'`/*#<>-\\(){}.\xC3\xA9@";
    for (int round = 0; round < 400; ++round) {
        std::string text(random() % 60, ' ');
        for (char& c : text) c = alphabet[random() % alphabet.size()];
        for (char const* language : {"swift", "py", "html", "sql", "js", "json", "sh", "brainfuck", ""}) {
            std::size_t at = 0;
            for (auto const& token : codeTokens(text, language)) {
                ASSERT_EQ(token.begin, at) << text;
                ASSERT_GT(token.end, token.begin) << text;
                at = token.end;
            }
            ASSERT_EQ(at, text.size()) << text << " as " << language;
        }
    }
}

/// The tokens of one kind, each in brackets.
static std::string found(CodeTokenKind kind, std::string_view text, std::string_view language) {
    std::string result;
    for (auto const& token : codeTokens(text, language)) {
        if (token.kind == kind) result += '[' + std::string(text.substr(token.begin, token.end - token.begin)) + ']';
    }
    return result;
}

TEST(CodeTokens, findWhatALanguageColours) {
    using enum CodeTokenKind;
    EXPECT_EQ(found(keyword, "let x = letter", "swift"), "[let]");
    EXPECT_EQ(found(keyword, "SELECT a FROM b", "sql"), "[SELECT][FROM]");
    EXPECT_EQ(found(string, "f(\"a\\\"b\", 'c", "js"), "[\"a\\\"b\"]['c]");
    EXPECT_EQ(found(string, "x = \"\"\"a\nb\"\"\" + 1", "python"), "[\"\"\"a\nb\"\"\"]");
    EXPECT_EQ(found(comment, "a // b\nc /* d\ne */ f", "C++"), "[// b][/* d\ne */]");
    EXPECT_EQ(found(comment, "curl x#y # z", "sh"), "[# z]");
    EXPECT_EQ(found(number, "3.14 + 0xFF + a1", "go"), "[3.14][0xFF]");
    EXPECT_EQ(found(function, "trim(a) + size", "rust"), "[trim]");
    EXPECT_EQ(found(keyword, "<a href=\"x\">if</a>", "html"), "[a][a]");
}

TEST(SpokenCaption, namesTheWordThatIsSpoken) {
    CaptionTrack track;
    track.style = CaptionStyle::karaoke;
    CaptionCue const cue{
        .start = 0, .duration = 4, .text = "one two three", .words = {{"one", 0, 1}, {"two", 1, 2}, {"three", 2, 4}}};
    auto const at = [&](double t) { return spokenCaption(track, cue, t); };
    EXPECT_EQ(at(1.5).spokenBegin, 4u);
    EXPECT_EQ(at(1.5).spokenEnd, 7u);
    EXPECT_EQ(at(1.5).spokenSteps, 4);
    EXPECT_EQ(at(5).spokenSteps, 8);
    EXPECT_EQ(at(-1).spokenEnd, 0u);
    track.style = CaptionStyle::creator;
    EXPECT_EQ(at(4.2).spokenBegin, 8u);
    EXPECT_EQ(at(4.5).spokenBegin, at(4.5).spokenEnd); // lit no longer
    track.reveal = CaptionReveal::word;
    EXPECT_EQ(at(-1).shownBytes, 0u);
    EXPECT_EQ(at(1.5).shownBytes, 7u);
    EXPECT_GE(at(3).shownBytes, cue.text.size());
}

TEST(SpokenCaption, wordsKeepTheirPlacesWhenTheTextHadToBeMadeReadable) {
    CaptionTrack track;
    track.style = CaptionStyle::creator;
    CaptionCue const cue{.start = 0, .duration = 2, .text = "  a\x01\x02\xFF\t\tbcd "};
    auto const caption = spokenCaption(track, cue, 1.9);
    EXPECT_EQ(caption.text.substr(caption.spokenBegin, caption.spokenEnd - caption.spokenBegin), "bcd");
    EXPECT_TRUE(caption.text.starts_with("a\xEF\xBF\xBD"));
}

}
