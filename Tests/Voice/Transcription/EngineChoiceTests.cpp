#include <TavaroVoice/Transcription/TranscriptionEngines.h>

#include "SpokenTake.h"

#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Transcription/SpokenLocale.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>

namespace tavaro {

namespace {

constexpr std::uintmax_t megabyte = 1 << 20;

/// A machine that has what a test puts there.
struct Machine {
    Machine() {
        std::filesystem::create_directory(places.speechModel);
        std::filesystem::create_directory(places.whisperModels);
        places.whisperProgram = folder / "none";
    }
    void addSphinx() {
        std::ofstream(places.speechModel / "en-us.lm.bin") << "model";
        places.listener = folder / "tavaro-listener";
    }
    /// A file that takes no room on the disk.
    void addWhisper(std::string const& model = "ggml-base.bin", std::string const& mark = "lmgg",
                    std::uintmax_t size = 2 * megabyte) {
        places.whisperProgram = folder.script("whisper-cli", "echo '  -ojf, --output-json-full' >&2");
        std::ofstream(places.whisperModels / model) << mark;
        std::filesystem::resize_file(places.whisperModels / model, size);
    }
    std::string chosen(std::string const& locale, std::string const& id = "") const {
        try {
            return chosenEngine(transcriptionEngines(places), id, locale).id;
        } catch (VoiceError const& error) {
            return error.what();
        }
    }

    TestFolder folder;
    EnginePlaces places{.speechModel = folder / "en-us", .whisperModels = folder / "Models"};
};

}

TEST(EngineChoice, theBestThatIsThereIsTaken) {
    Machine machine;
    machine.addSphinx();
    EXPECT_EQ(machine.chosen("en-US"), "pocketsphinx");
    EXPECT_EQ(machine.chosen("en-GB"), "pocketsphinx");
    machine.addWhisper();
    EXPECT_EQ(machine.chosen("en-US"), "whisper");
    EXPECT_EQ(machine.chosen("de-DE"), "whisper");
    EXPECT_EQ(machine.chosen("en-US", "pocketsphinx"), "pocketsphinx");
}

TEST(EngineChoice, whatIsNotPossibleIsSaid) {
    Machine machine;
    EXPECT_EQ(machine.chosen("en-US"), "The speech model for en-US isn't on this computer yet. Install the package "
                                       "pocketsphinx-en-us — after that, transcription works offline.");
    machine.addSphinx();
    EXPECT_EQ(machine.chosen("de-DE"), "On-device transcription doesn't support de-DE.");
    EXPECT_TRUE(
        machine.chosen("de-DE", "whisper").starts_with("The speech model for de-DE isn't on this computer yet."));
    EXPECT_EQ(machine.chosen("de-DE", "pocketsphinx"), "On-device transcription doesn't support de-DE.");
    EXPECT_EQ(machine.chosen("en-US", "other"), "There is no engine “other” for transcription.");
    machine.addWhisper("ggml-base.en.bin");
    EXPECT_EQ(machine.chosen("de-DE"), "On-device transcription doesn't support de-DE.") << "a model of English alone";
}

TEST(EngineChoice, theLargestRealModelOfTheFolderIsTaken) {
    Machine machine;
    machine.addWhisper("ggml-base.bin");
    machine.addWhisper("ggml-large.bin", "lmgg", 3 * megabyte);
    machine.addWhisper("ggml-no-model.bin", "<html>", 4 * megabyte);
    machine.addWhisper("ggml-silero-v5.bin", "lmgg", 4 * megabyte);
    machine.addWhisper("notes.txt", "lmgg", 4 * megabyte);
    auto const engine = transcriptionEngines(machine.places)[0];
    EXPECT_TRUE(engine.isReady);
    EXPECT_EQ(engine.model, (machine.places.whisperModels / "ggml-large.bin").string());
    machine.places.whisperModel = machine.places.whisperModels / "ggml-no-model.bin";
    EXPECT_FALSE(transcriptionEngines(machine.places)[0].isReady) << "the user named one that is none";
}

TEST(EngineChoice, whatABrokenDownloadLeftIsNoModel) {
    Machine machine;
    machine.addSphinx();
    machine.addWhisper("ggml-base.bin", "lmgg", 8);
    EXPECT_FALSE(transcriptionEngines(machine.places)[0].isReady);
    EXPECT_EQ(machine.chosen("en-US"), "pocketsphinx");
}

TEST(SpokenLocale, languagesAreUnderstoodHoweverTheyAreWritten) {
    EXPECT_EQ(localeIdentifier("en_US.UTF-8"), "en-US");
    EXPECT_EQ(localeIdentifier("de"), "de");
    EXPECT_EQ(localeIdentifier("PT-br"), "pt-BR");
    EXPECT_EQ(localeIdentifier("zh_hans_CN"), "zh-Hans-CN");
    EXPECT_EQ(localeIdentifier("ca_ES@valencia"), "ca-ES");
    for (auto const* const text : {"", "C", "C.UTF-8", "POSIX", "english", "e1", "en-", "en--US", "en-U$", "../en"})
        EXPECT_EQ(localeIdentifier(text), std::nullopt) << text;
}

}
