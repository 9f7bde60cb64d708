#include <TavaroCore/Captions/Subtitles.h>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <random>

using namespace tavaro;
using ::testing::HasSubstr;

namespace {

std::string drawn(std::vector<CaptionCue> const& cues) {
    std::string text;
    for (auto const& cue : cues) text += fmt::format("[{:.6g} {} {:.6g}]", cue.start, cue.text, cue.range().end());
    return text;
}

std::string read(std::string_view file) { return drawn(readSubtitles(file)); }

/// The sentence that refuses the file.
std::string refusal(std::string_view file) {
    try {
        return "read: " + read(file);
    } catch (SubtitleError const& error) {
        return error.what();
    }
}

std::vector<CaptionCue> const film = {{.start = 3725.0405, .duration = 1, .text = "later"},
                                      {.start = 0.9996, .duration = 1.4999, .text = "a < b & c\n\n  second "},
                                      {.start = 5, .duration = 1, .text = " \n"},
                                      {.start = -0.5, .duration = 1, .text = "x --> y"}};

constexpr std::string_view subRip = "1\r\n00:00:01,000 --> 00:00:02,500\r\nHello <i>there</i> <3\r\n\r\n"
                                    "2\r\n00:00:03,000 --> 00:00:04,000 X1:10\r\n{\\an8}- Two\r\n- lines\r\n";
constexpr std::string_view webVTT =
    "WEBVTT - title\n\nSTYLE\n::cue { color: red }\n\nNOTE not --> this\nnor this\n\n"
    "intro\n00:01.000 --> 00:02.500 align:start\n<v Ann>a &lt;b&gt; &amp; <c>&#233;</c>\n\n"
    "01:00:03.000 --> 01:00:04.000\nlast &unknown;\n";

}

TEST(SubRip, timesAreRoundedToTheNearestMillisecond) {
    EXPECT_EQ(subRipText(film), "1\n00:00:00,000 --> 00:00:00,500\nx → y\n\n"
                                "2\n00:00:01,000 --> 00:00:02,500\na < b & c\nsecond\n\n"
                                "3\n01:02:05,041 --> 01:02:06,041\nlater\n\n");
    EXPECT_EQ(subRipText(std::span(film).first(1), 0.25), "1\n01:02:05,291 --> 01:02:06,291\nlater\n\n");
    EXPECT_EQ(subRipText({}), "");
}

TEST(WebVTT, textIsEscaped) {
    EXPECT_EQ(webVTTText(std::span(film).subspan(1)), "WEBVTT\n\n"
                                                      "00:00:00.000 --> 00:00:00.500\nx --&gt; y\n\n"
                                                      "00:00:01.000 --> 00:00:02.500\na &lt; b &amp; c\nsecond\n\n");
}

TEST(SubtitleReading, bothFormatsAreUnderstood) {
    EXPECT_EQ(read(subRip), "[1 Hello there <3 2.5][3 - Two\n- lines 4]");
    EXPECT_EQ(read(webVTT), "[1 a <b> & é 2.5][3603 last &unknown; 3604]");
    auto const cue = readSubtitles(subRip)[0];
    ASSERT_EQ(cue.words.size(), 3u) << "so that words can be shown and cut";
    EXPECT_EQ(cue.words[0], (CaptionWord{"Hello", 1, 1.625}));
}

TEST(SubtitleReading, whatPeopleWriteByHandIsUnderstood) {
    EXPECT_EQ(read("0:0:1.5-->0:00:2\nno number\n00:03 --> 00:04\nno blank line"),
              "[1.5 no number 2][3 no blank line 4]");
    EXPECT_EQ(
        read(
            "1\n00:00:01,000 --> 00:00:02,000\n\nbelow a blank\n\nand another\n2\n00:00:03,000 --> 00:00:04,000\n42\n"),
        "[1 below a blank\nand another 2][3 42 4]");
    EXPECT_EQ(read("7\n00:00:09,000 --> 00:00:10,000\nlate\n\n8\n00:00:01,000 --> 00:00:02,000\nearly\n\n9\n"
                   "00:00:11,000 --> 00:00:12,000\n\n"),
              "[1 early 2][9 late 10]")
        << "by time, and without the empty one";
    EXPECT_EQ(read("\xef\xbb\xbf"
                   "1\r00:00:01,000 --> 00:00:02,000\rold line ends\r"),
              "[1 old line ends 2]");
    EXPECT_EQ(read("00:00:01,000 --> 00:00:02,000\ncaf\xe9 \x96 ol\xe9"), "[1 café – olé 2]");
    std::string utf16 = "\xff\xfe";
    for (char const c : std::string_view("0:00 --> 0:01\nB\n")) utf16 += {c, c == 'B' ? '\x04' : '\0'};
    EXPECT_EQ(read(utf16), "[0 т 1]");
}

TEST(SubtitleReading, whatCannotBeReadIsNamedWithItsLine) {
    EXPECT_EQ(refusal("1\n00:00:01,000 --> 00:00:02,000\nfine\n\n2\n00:00:0x,000 --> 00:00:04,000\nbad\n"),
              "Line 6: “00:00:0x,000 --> 00:00:04,000” gives no times; they read “00:00:01,000 --> 00:00:02,500”.");
    EXPECT_EQ(refusal("WEBVTT\n\n00:05.000 --> 00:04.000\nbackwards\n"),
              "Line 3: “00:05.000 --> 00:04.000” ends before it begins.");
    for (auto const* bad : {"00:61,000 --> 01:02,000", "5 --> 6", "1:2:3:4 --> 1:2:3:5", "-00:01 --> 00:02",
                            "00:01, --> 00:02", "00:01 --> 00:02s", "9999999:00:00 --> 9999999:00:01", "-->"}) {
        EXPECT_THAT(refusal(bad), HasSubstr("Line 1: “")) << bad;
    }
    for (auto const* nothing :
         {"", "just text\n", "WEBVTT\n\nNOTE no --> cue\n", "00:00:01,000 --> 00:00:02,000\n<i></i>\n"}) {
        EXPECT_THAT(refusal(nothing), HasSubstr("There are no captions in it")) << nothing;
    }
    EXPECT_LT(refusal(std::string(100'000, 'x') + "-->").size(), 250u);
}

TEST(SubtitleReading, damagedFilesAreRefusedOrReadAndWrittenTheSame) {
    std::vector<std::string> const seeds = {std::string(subRip), std::string(webVTT)};
    for (unsigned seed = 0; seed < 4000; ++seed) {
        std::mt19937 random(seed);
        auto text = seeds[seed % seeds.size()];
        for (auto changes = 1 + random() % 6; changes > 0; --changes) {
            auto const at = random() % text.size();
            static constexpr std::string_view bytes("<>&;:-,.\n\r\0 0{\\}\xff\xc3", 18);
            if (random() % 3 == 0)
                text.erase(at, random() % 8);
            else
                text.insert(at, 1, bytes[random() % bytes.size()]);
            if (text.empty()) text.push_back('-');
        }
        SCOPED_TRACE(fmt::format("seed {}", seed));
        try {
            auto const cues = readSubtitles(text);
            EXPECT_EQ(drawn(readSubtitles(webVTTText(cues))), drawn(cues));
        } catch (SubtitleError const& error) {
            EXPECT_GE(error.line, 1u);
        }
    }
}

TEST(SubtitleReading, hugeAndHostileFilesTakeNoLongerThanTheirLength) {
    std::string const head = "00:00:01,000 --> 00:00:02,000\n";
    for (auto const* piece : {"<", "{\\", "&", "<i", "\n", "1\n", "画"}) {
        std::string text = head;
        while (text.size() < 2'000'000) text += piece;
        EXPECT_NO_THROW(refusal(text)) << piece;
        EXPECT_NO_THROW(refusal("WEBVTT\n\n" + text)) << piece;
    }
}
