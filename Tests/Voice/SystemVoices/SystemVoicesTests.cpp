#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/SystemVoices/Private/EspeakSpeaker.h>
#include <TavaroVoice/SystemVoices/SystemVoices.h>

#include <TavaroCore/Voice/VoiceoverPlan.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>

namespace tavaro {

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using ::testing::IsEmpty;
using Kind = VoiceError::Kind;

/// One voice of each engine that is installed.
std::vector<std::string> someVoices() {
    auto const all = SystemVoices().voices();
    std::vector<std::string> ids;
    for (auto const* id : {"system:festival/cmu_us_slt_arctic_hts", "system:flite/slt", "system:espeak-ng/en-us"})
        if (std::ranges::find(all, id, &Voice::id) != all.end()) ids.emplace_back(id);
    return ids;
}

double powerOf(Speech const& speech, double start, double end) {
    auto const at = [&](double time) {
        return std::min(static_cast<std::size_t>(time * speech.sampleRate), speech.samples.size());
    };
    double sum = 0;
    for (auto i = at(start); i < at(end); ++i) sum += speech.samples[i] * speech.samples[i];
    return sum;
}

Kind kindOf(std::string const& voice, std::string const& text, SystemVoices::Places const& places) {
    try {
        SystemVoices(places).speak(text, {.voiceID = voice}, {});
    } catch (VoiceError const& error) {
        EXPECT_THAT(error.what(), ::testing::EndsWith("."));
        return error.kind;
    }
    return Kind::noSound; // of all kinds the one that no speaker throws
}

fs::path scriptIn(fs::path const& folder, std::string const& body) {
    auto const file = folder / "engine";
    std::ofstream(file) << "#!/bin/sh\n" << body << "\n";
    fs::permissions(file, fs::perms::owner_all);
    return file;
}

class SystemVoicesInFolder : public ::testing::Test {
protected:
    SystemVoicesInFolder() {
        auto pattern = (fs::temp_directory_path() / "tavaro-voice-XXXXXX").string();
        folder = ::mkdtemp(pattern.data());
    }
    ~SystemVoicesInFolder() override { fs::remove_all(folder); }
    fs::path folder;
};

}

TEST(SystemVoices, everyEngineSaysALineAndWhenItsWordsAreHeard) {
    auto const voices = someVoices();
    ASSERT_THAT(voices, ::testing::Not(IsEmpty()));
    for (auto const& id : voices) {
        SystemVoices speaker;
        auto const speech = speaker.speak("Hello there, this costs $25 (and it works).", {.voiceID = id}, {});
        EXPECT_EQ(speech.sampleRate, 48'000);
        EXPECT_GT(speech.duration(), 1.5) << id;
        EXPECT_LT(speech.duration(), 6) << id;
        auto const whole = powerOf(speech, 0, speech.duration());
        EXPECT_GT(whole / static_cast<double>(speech.samples.size()), 1e-4) << id << " is silent";
        auto const fast = speaker.speak("Hello there, this costs $25 (and it works).", {.voiceID = id, .speed = 2}, {});
        EXPECT_NEAR(fast.duration() / speech.duration(), 0.5, 0.13) << id;
        if (id.find("espeak") != std::string::npos) continue;
        std::vector<std::string> words;
        double last = 0, within = 0;
        for (auto const& word : speech.words) {
            words.push_back(word.text);
            EXPECT_GE(word.start, last) << id << ": " << word.text;
            EXPECT_GT(word.end, word.start + 0.02) << id << ": " << word.text;
            within += powerOf(speech, word.start, word.end);
            last = word.end;
        }
        EXPECT_THAT(words, ::testing::ElementsAre("Hello", "there,", "this", "costs", "$25", "(and", "it", "works)."));
        EXPECT_GT(within, 0.95 * whole) << id << " is heard outside its words";
    }
}

TEST_F(SystemVoicesInFolder, anyTextIsSaidOrRefusedWithASentence) {
    auto const places = SystemVoices::Places::ofThisMachine();
    auto const made = (folder / "made").string();
    std::vector<std::string> const said{
        "She said \"stop\" <break time=\"30s\"/> & [[went]] on.",
        "x\") (system \"touch " + made + "\") (quit) (\"",
        "\\\") (system \"touch " + made + "\")",
        "-v de --version; $(touch " + made + ") `touch " + made + "`",
        "Привет, мир! Café – “naïve” 🎉 日本",
        std::string("one\0two\x01\x1b[31m\x07", 14),
        "broken \xff\xfe bytes \xed\xa0\x80",
        "1234567890 $1,234.56 @#%&*()_+{}|:<>?~`",
    };
    for (auto const& voice : someVoices()) {
        for (auto const& text : said) {
            auto const speech = SystemVoices(places).speak(text, {.voiceID = voice}, {});
            EXPECT_GT(speech.duration(), 0.2) << voice << ": " << text;
            EXPECT_LT(speech.duration(), 25) << voice << ": " << text;
        }
        for (auto const* text : {"", "   \n\t", "🎉🎉", "—", "\"\"", "\xff"})
            EXPECT_EQ(kindOf(voice, text, places), Kind::nothingToSay) << voice << ": " << text;
        EXPECT_EQ(kindOf(voice, std::string(100'000, 'a'), places), Kind::tooLong);
    }
    EXPECT_FALSE(fs::exists(made)) << "a text was obeyed";
}

TEST_F(SystemVoicesInFolder, enginesThatAreNotThereOrFailAreReported) {
    SystemVoices::Places const none{.festivalVoices = folder};
    EXPECT_EQ(kindOf("system:espeak-ng/en-us", "Hello.", none), Kind::noEngine);
    EXPECT_EQ(kindOf("system:festival/x", "Hello.", none), Kind::noEngine);
    EXPECT_EQ(kindOf("system:other/x", "Hello.", none), Kind::noVoice);
    EXPECT_EQ(kindOf("system:flite/../../evil", "Hello.", none), Kind::noVoice);
    fs::create_directories(folder / "us/good");
    fs::create_directories(folder / "us/evil) (quit");
    constexpr auto list = "[ $1 = --voices ] && { echo heading; echo '5 en-us --/M A b'; exit; }\n";
    for (auto const* body : {"exit 3", "cat; echo no sound", "kill -9 $$", "true", "printf RIFF1234WAVE",
                             "printf 'RIFF1234WAVEfmt \\020\\0\\0\\0\\1\\0\\0\\0'"}) {
        auto const engine = scriptIn(folder, std::string(list) + body);
        SystemVoices::Places const places{.espeak = engine, .festival = engine, .festivalVoices = folder};
        EXPECT_EQ(kindOf("system:espeak-ng/en-us", "Hello.", places), Kind::failed) << body;
        EXPECT_EQ(kindOf("system:festival/good", "Hello.", places), Kind::failed) << body;
        EXPECT_EQ(kindOf("system:festival/evil) (quit", "Hello.", places), Kind::noVoice) << body;
    }
}

TEST_F(SystemVoicesInFolder, aStopEndsTheEngineAndAllThatItStarted) {
    fs::create_directories(folder / "us/good");
    auto const running = folder / "running";
    auto const engine = scriptIn(folder, "sleep 60 & echo $! > " + running.string() + ".new; mv " + running.string() +
                                             ".new " + running.string() + "; sleep 60");
    SystemVoices speaker({.festival = engine, .festivalVoices = folder});
    std::stop_source source;
    SerialQueue stopper("com.tavaro.test.stop");
    stopper.async([&] {
        for (int i = 0; i < 1000 && !fs::exists(running); ++i) std::this_thread::sleep_for(5ms);
        source.request_stop();
    });
    auto const begun = std::chrono::steady_clock::now();
    try {
        speaker.speak("Hello.", {.voiceID = "system:festival/good"}, source.get_token());
        FAIL() << "it is said";
    } catch (VoiceError const& error) {
        EXPECT_EQ(error.kind, Kind::cancelled);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begun, 10s);
    int process = 0;
    std::ifstream(running) >> process;
    ASSERT_GT(process, 0);
    auto const isGone = [&] {
        std::ifstream status("/proc/" + std::to_string(process) + "/stat");
        std::string text;
        std::getline(status, text);
        return text.empty() || text.find(") Z ") != std::string::npos;
    };
    for (int i = 0; i < 200 && !isGone(); ++i) std::this_thread::sleep_for(5ms);
    EXPECT_TRUE(isGone());
}

TEST(SystemVoices, areFoundByTheirLanguage) {
    auto const voices = EspeakSpeaker::voicesOf("Pty Language Age/Gender VoiceName File Other\n"
                                                " 5  en-us  --/M English_(America) gmw/en-US (en 3)\n"
                                                " 5  chr-US-Qaaa-x-west --/M Cherokee_ iro/chr\n"
                                                " 5  en-us --/M twice x\n"
                                                " 5  -vevil --/M Evil x\n 5 a;b --/M Evil x\n5\n\xff\xff");
    ASSERT_EQ(voices.size(), 2u);
    EXPECT_EQ(voices[0].id, "system:espeak-ng/en-us");
    EXPECT_EQ(voices[0].language, "en-US");
    EXPECT_EQ(voices[0].name, "English (America)");
    EXPECT_EQ(voices[1].language, "chr-US-Qaaa-x-west");
    EXPECT_TRUE(speaks(voices[0], "en"));
    EXPECT_TRUE(speaks(voices[0], "EN_us"));
    EXPECT_FALSE(speaks(voices[0], "en-GB"));
    EXPECT_FALSE(speaks(voices[0], "e"));
    EXPECT_TRUE(speaks(Voice{}, "de"));
    for (auto const& voice : SystemVoices().available("en-GB")) EXPECT_EQ(voice.language.substr(0, 5), "en-GB");
}

}
