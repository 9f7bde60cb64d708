#include <TavaroVoice/Transcription/Private/WhisperProgram.h>

#include "SpokenTake.h"

#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Transcription/Private/WhisperOutput.h>

#include <gtest/gtest.h>

#include <fstream>

namespace tavaro {

namespace {

std::string token(std::string const& text, int from, int to, double p) {
    return R"({"text":")" + text + R"(","timestamps":{"from":"00:00:00,000","to":"00:00:00,000"},"offsets":{"from":)" +
           std::to_string(from) + R"(,"to":)" + std::to_string(to) + R"(},"id":1,"p":)" + std::to_string(p) +
           R"(,"t_dtw":-1})";
}

std::string output(std::string const& text, std::vector<std::string> const& tokens) {
    std::string joined;
    for (auto const& each : tokens) joined += (joined.empty() ? "" : ",") + each;
    return R"({"systeminfo":"AVX = 1","result":{"language":"en"},"transcription":[{"offsets":{"from":0,"to":9000},"text":")" +
           text + R"(","tokens":[)" + joined + "]}]}";
}

std::vector<std::string> texts(std::vector<HeardWord> const& words) {
    std::vector<std::string> result;
    for (auto const& word : words) result.push_back(word.text);
    return result;
}

/// Behaves as the program's documentation says: it wants a model and a sound, and writes OUTPUT.json.
std::string const standIn = R"sh(
for word; do case "$word" in --help) echo "-ojf, --output-json-full" >&2; exit 0;; esac; done
while [ $# -gt 0 ]; do case "$1" in
  -m) model=$2; shift;; -f) sound=$2; shift;; -of) out=$2; shift;; -l) language=$2; shift;; -t) shift;; -ojf) full=1;;
  *) echo "error: unknown argument: $1" >&2; exit 1;; esac; shift; done
[ "$full" = 1 ] && [ -s "$model" ] && [ "$(head -c 4 "$sound")" = RIFF ] || { echo "error: failed to open" >&2; exit 2; }
)sh";

MonoSound const second{std::vector<float>(speechRate, 0.1F), speechRate};

}

TEST(WhisperOutput, tokensBecomeWordsAgain) {
    auto const words =
        wordsOfWhisper(output(" Good morning, every-one.",
                              {token("[_BEG_]", 0, 0, 1), token(" Good", 100, 300, 0.5), token(" mor", 300, 500, 0.8),
                               token("ning", 500, 700, 0.6), token(",", 700, 720, 1), token(" one", 900, 1100, 0.9),
                               token("[_TT_300]", 1100, 1100, 0.1)}));
    EXPECT_EQ(texts(words), (std::vector<std::string>{" Good", " morning,", " one"}));
    EXPECT_DOUBLE_EQ(words[1].start, 0.3);
    EXPECT_DOUBLE_EQ(words[1].end, 0.72);
    EXPECT_NEAR(words[1].confidence, 0.8, 1e-6);
}

TEST(WhisperOutput, aCharacterInTwoTokensIsWhole) {
    // "ü" is split, as it happens; then Han, which has no blanks.
    auto const words = wordsOfWhisper(output(" f\xC3\xBCr", {token(" f\xC3", 0, 100, 1), token("\xBCr", 100, 200, 1)}));
    EXPECT_EQ(texts(words), (std::vector<std::string>{" f\xC3\xBCr"}));
    auto const han = wordsOfWhisper(output("你好，世界", {token("你好", 0, 100, 1), token("，", 100, 110, 1),
                                                          token("世", 200, 300, 1), token("界", 300, 400, 1)}));
    EXPECT_EQ(han.front().text.substr(0, 6), "你好");
    EXPECT_GE(han.size(), 3U);
}

TEST(WhisperOutput, notesAboutOtherSoundsAreNoWords) {
    for (auto const* const note : {" [BLANK_AUDIO]", " (upbeat music)", " *laughs*", " ♪ la la ♪"})
        EXPECT_TRUE(wordsOfWhisper(output(note, {token(note, 0, 1000, 0.9)})).empty()) << note;
}

TEST(WhisperOutput, whatIsNoOutputIsRefused) {
    for (auto const* const text : {"", "[]", "{", R"({"transcription":7})", "\xFF\xFE", "null"})
        EXPECT_THROW(wordsOfWhisper(text), RecogniserLost) << text;
}

TEST(WhisperProgram, soundAndWordsPassThroughFilesThatDoNotStay) {
    TestFolder const folder;
    std::ofstream(folder / "ggml-test.bin") << "lmgg";
    std::ofstream(folder / "said.json") << output(" Hallo Welt",
                                                  {token(" Hallo", 100, 400, 0.9), token(" Welt", 500, 5000, 0.8)});
    auto const program = folder.script(
        "whisper-cli", standIn + R"(echo "$language" > ")" + (folder / "language").string() + "\"\ncp \"" +
                           (folder / "said.json").string() + "\" \"$out.json\"\ndirname \"$out\" > \"" +
                           (folder / "where").string() + "\"\n");
    ASSERT_TRUE(WhisperProgram::answersAsWhisper(program));
    WhisperProgram whisper({.program = program, .model = folder / "ggml-test.bin", .language = "de"});
    auto const words = whisper.hear(second, {});
    EXPECT_EQ(texts(words), (std::vector<std::string>{"Hallo", "Welt"}));
    EXPECT_LE(words[1].end, 1) << "inside of the piece";
    std::string where, language;
    std::ifstream(folder / "where") >> where;
    std::ifstream(folder / "language") >> language;
    EXPECT_EQ(language, "de");
    EXPECT_TRUE(std::filesystem::path(where).filename().string().starts_with("tavaro-speech-"));
    EXPECT_TRUE(std::filesystem::is_empty(where));
}

TEST(WhisperProgram, breakingDownHangingAndCancellingEndAsTheyShould) {
    TestFolder const folder;
    std::ofstream(folder / "ggml-test.bin") << "lmgg";
    auto const whisperOf = [&](std::string const& end) {
        return WhisperProgram({.program = folder.script("whisper-cli", standIn + end),
                               .model = folder / "ggml-test.bin",
                               .start = std::chrono::milliseconds(300),
                               .perSecond = std::chrono::milliseconds(0)});
    };
    auto crashing = whisperOf("echo 'error: out of memory' >&2; kill -SEGV $$");
    try {
        crashing.hear(second, {});
        FAIL() << "no failure";
    } catch (RecogniserLost const& error) {
        EXPECT_NE(std::string(error.what()).find("out of memory"), std::string::npos) << error.what();
    }
    auto hanging = whisperOf("sleep 30");
    EXPECT_THROW(hanging.hear(second, {}), RecogniserLost);
    auto wordless = whisperOf("exit 0");
    EXPECT_THROW(wordless.hear(second, {}), RecogniserLost);
    std::stop_source stop;
    stop.request_stop();
    try {
        hanging.hear(second, stop.get_token());
        FAIL() << "no failure";
    } catch (VoiceError const& error) {
        EXPECT_EQ(error.kind, VoiceError::Kind::cancelled);
    }
}

TEST(WhisperProgram, aProgramCalledMainIsAskedWhatItIs) {
    TestFolder const folder;
    EXPECT_FALSE(WhisperProgram::answersAsWhisper(folder.script("main", "echo 'usage: main FILE'")));
    EXPECT_FALSE(WhisperProgram::answersAsWhisper(folder / "nothing"));
}

TEST(SpeechFolder, whatAKilledProcessLeftGoesAndWhatIsInUseStays) {
    namespace fs = std::filesystem;
    TestFolder const folder;
    auto const old = fs::file_time_type::clock::now() - std::chrono::hours(1);
    for (auto const* const name : {"tavaro-speech-left", "tavaro-other", "tavaro-speech-linked"})
        fs::create_directory(folder / name);
    std::ofstream(folder / "tavaro-speech-left" / "tavaro-speech-0.wav") << "sound";
    fs::create_directory_symlink(folder / "tavaro-other", folder / "tavaro-speech-link");
    SpeechFolder const first(folder.path);
    for (auto const& each : fs::directory_iterator(folder.path)) fs::last_write_time(each, old);
    SpeechFolder const second(folder.path);
    EXPECT_FALSE(fs::exists(folder / "tavaro-speech-left"));
    EXPECT_TRUE(fs::exists(folder / "tavaro-other"));
    EXPECT_TRUE(fs::is_symlink(folder / "tavaro-speech-link"));
    EXPECT_TRUE(fs::exists(first.path()));
    EXPECT_EQ(fs::status(second.path()).permissions(), fs::perms::owner_all);
}

}
