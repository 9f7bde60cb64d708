#include "../ElevenLabs/TestService.h"

#include <TavaroVoice/ElevenLabs/ElevenLabsKey.h>
#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Voices/VoiceBox.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace tavaro {

namespace {

/// Made where it is used, so that it is not in the program itself.
std::string madeKey() {
    std::string key = "sk_";
    for (int i = 0; i < 24; ++i) key += static_cast<char>('a' + (i * 7 + 3) % 26);
    return key;
}

/// How often the key is in this process's memory; its pages of secrets are counted apart.
struct Places {
    int ofSecrets = 0;
    int others = 0;
};

/// Looks for it backwards, so that looking leaves no copy. `backwards` is not the key either.
Places placesOf(std::string const& backwards) {
    Places places;
    std::ifstream maps("/proc/self/maps");
    auto* const memory = std::fopen("/proc/self/mem", "rb");
    std::vector<char> piece;
    for (std::string line; std::getline(maps, line);) {
        unsigned long begin = 0, end = 0;
        std::array<char, 5> access{};
        if (std::sscanf(line.c_str(), "%lx-%lx %4s", &begin, &end, access.data()) != 3) continue;
        if (access[0] != 'r' || access[1] != 'w' || line.find("[v") != std::string::npos) continue;
        for (auto at = begin; at < end; at += 1 << 20) {
            piece.assign(std::min<std::size_t>((1 << 20) + 64, end - at), 0);
            std::fseek(memory, static_cast<long>(at), SEEK_SET);
            auto const count = std::fread(piece.data(), 1, piece.size(), memory);
            for (std::size_t i = 0; i + backwards.size() <= count; ++i) {
                auto const* const text = piece.data() + i;
                if (!std::equal(backwards.rbegin(), backwards.rend(), text)) continue;
                bool const isOwnPiece = at + i >= reinterpret_cast<std::uintptr_t>(piece.data()) &&
                                        at + i < reinterpret_cast<std::uintptr_t>(piece.data() + piece.size());
                if (!isOwnPiece) ++(end - begin <= 3 * 4096 ? places.ofSecrets : places.others);
            }
            std::fill(piece.begin(), piece.end(), 0);
        }
    }
    std::fclose(memory);
    return places;
}

}

TEST(VoiceBox, leavesNoKeyInMemoryWhenAllIsSaid) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer's memory is too large to look through";
#endif
    TestService service;
    std::string backwards = madeKey();
    std::reverse(backwards.begin(), backwards.end());
    {
        Secret kept;
        for (auto c = backwards.rbegin(); c != backwards.rend(); ++c) kept.append(*c);
        EXPECT_GE(placesOf(backwards).ofSecrets + placesOf(backwards).others, 1) << "the search finds nothing at all";
        VoiceBox box({.places = {.festivalVoices = "/none"}, .service = {.host = service.host()}, .key = [&] {
                          return std::optional(kept.copy());
                      }});
        EXPECT_FALSE(box.voices().empty());
        for (auto const* voice : {"status-500", "ok", "echo", "half"}) {
            try {
                box.speak("Hello.", {.voiceID = voice}, {});
            } catch (VoiceError const&) {
                // what matters is what is left
            }
            EXPECT_EQ(placesOf(backwards).others, 0) << voice;
        }
    }
    auto const after = placesOf(backwards);
    EXPECT_EQ(after.ofSecrets + after.others, 0);
}

TEST(VoiceBox, offersWhatThereIsAndSaysWhyNotMore) {
    TestService service;
    auto const boxWith = [&](char const* key) {
        return VoiceBox::Settings{.service = {.host = service.host()},
                                  .key = [key] { return key ? std::optional(Secret(key)) : std::nullopt; }};
    };
    VoiceBox without(boxWith(nullptr)), with(boxWith("good")), refused(boxWith("list-status-401"));
    auto const own = without.voices();
    for (auto const& voice : own) EXPECT_TRUE(isSystemVoice(voice.id)) << voice.id;
    EXPECT_EQ(with.voices().size(), own.size() + 1);
    EXPECT_EQ(with.voices().back().id, "mine1");
    EXPECT_EQ(refused.voices().size(), own.size() + 5);
    EXPECT_EQ(refused.problem(), "That ElevenLabs API key was rejected.");
    VoiceBox locked({.service = {.host = service.host()}, .key = []() -> std::optional<Secret> {
                         throw VoiceError(VoiceError::Kind::noKey, "The keychain is locked.");
                     }});
    EXPECT_EQ(locked.voices().size(), own.size());
    EXPECT_EQ(locked.problem(), "The keychain is locked.") << "who has a key reads that there is none";
    EXPECT_EQ(without.problem(), "");
    service.requests();
    if (own.empty()) GTEST_SKIP() << "no engine is installed";
    EXPECT_GT(with.speak(VoiceBox::previewLine, {.voiceID = own.front().id}, {}).duration(), 1);
    EXPECT_TRUE(service.requests().empty()) << "a voice of this machine reached the service";
}

}
