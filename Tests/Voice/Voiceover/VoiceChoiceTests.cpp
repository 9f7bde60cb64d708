#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Voiceover/VoiceChoice.h>

#include <gtest/gtest.h>

namespace tavaro {

namespace {

OfferedVoices offered(bool hasKey = false) {
    return {.voices = {{.id = "system:espeak-ng/de", .name = "German", .language = "de", .engine = "espeak-ng"},
                       {.id = "system:espeak-ng/en-us", .name = "English", .language = "en-US", .engine = "espeak-ng"},
                       {.id = "system:flite/kal", .name = "kal", .language = "en-US", .engine = "flite"},
                       {.id = "system:flite/slt", .name = "slt", .language = "en-US", .engine = "flite"},
                       {.id = "21m00Tcm4TlvDq8ikWAM", .name = "Rachel", .engine = "ElevenLabs"}},
            .hasKey = [=] { return hasKey; }};
}

std::string chosen(OfferedVoices const& voices, std::string_view asked = "", std::string const& before = "") {
    return chosenVoice({.voiceID = before}, asked, voices).voiceID;
}

TEST(VoiceChoice, withoutOneIsTheClearestOfThisMachineAndWithAKeyTheServices) {
    EXPECT_EQ(chosen(offered()), "system:flite/slt");
    auto voices = offered();
    voices.voices.push_back({.id = "system:festival/cmu_us_slt", .language = "en-US", .engine = "festival"});
    EXPECT_EQ(chosen(voices), "system:festival/cmu_us_slt");
    voices.voices.resize(2);
    EXPECT_EQ(chosen(voices), "system:espeak-ng/en-us");
    EXPECT_EQ(chosen({}), "21m00Tcm4TlvDq8ikWAM");
    auto locked = offered();
    locked.hasKey = []() -> bool { throw VoiceError(VoiceError::Kind::noKey, "The keychain is locked."); };
    EXPECT_EQ(chosen(locked), "system:flite/slt");
    auto const byService = chosenVoice({}, "", offered(true));
    EXPECT_EQ(byService.voiceName, "Rachel");
    EXPECT_EQ(byService.modelID, "eleven_multilingual_v2");
}

TEST(VoiceChoice, isWhoWasAskedForByIdOrNameElseThePlansOwn) {
    EXPECT_EQ(chosen(offered(true), "", "system:flite/kal"), "system:flite/kal");
    EXPECT_EQ(chosen(offered(), "SLT", "system:flite/kal"), "system:flite/slt");
    EXPECT_EQ(chosen(offered(), "a-voice-of-my-own"), "a-voice-of-my-own");
    auto twins = offered();
    twins.voices.push_back({.id = "system:festival/slt", .name = "slt", .engine = "festival"});
    EXPECT_EQ(chosen(twins, "slt"), "slt") << "of two with one name nobody knows which";
    EXPECT_EQ(chosenVoice({.voiceID = "system:flite/kal", .voiceName = "kal"}, "someone", offered()).voiceName, "");
}

}

}
