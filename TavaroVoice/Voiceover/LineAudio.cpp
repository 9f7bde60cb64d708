#include <TavaroVoice/Voiceover/LineAudio.h>

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Voice/VoiceoverPlan.h>
#include <TavaroVoice/Speaking/Private/SpokenText.h>
#include <TavaroVoice/Speaking/Speaker.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>

namespace tavaro {

namespace {

// Rises when the same line comes to sound otherwise.
constexpr int recipe = 1;

constexpr std::string_view prefix = "voiceover-";
constexpr std::string_view ending = ".caf";

/// FNV-1a.
std::uint64_t hashed(std::string_view text, std::uint64_t hash) {
    for (unsigned char const byte : text) hash = (hash ^ byte) * 0x100000001B3;
    return hash;
}

/// What is heard of the settings: a voice of this machine knows nothing but its speed.
std::string heard(VoiceSettings const& voice) {
    if (isSystemVoice(voice.voiceID)) return fmt::format("{}\n{:.4f}", voice.voiceID, voice.speed);
    return fmt::format("{}\n{:.4f}\n{}\n{:.4f} {:.4f} {:.4f} {}", voice.voiceID, voice.speed, voice.modelID,
                       voice.stability, voice.similarityBoost, voice.style, voice.useSpeakerBoost);
}

}

std::string lineAsset(std::string_view text, VoiceSettings const& voice) {
    auto const all = fmt::format("{}\n{}\n{}", recipe, heard(voice), trimmed(text));
    auto const first = hashed(all, 0xCBF29CE484222325);
    return fmt::format("{}{:016x}{:016x}{}", prefix, first, hashed(all, first), ending);
}

std::string lineWordsAsset(std::string_view lineAsset) {
    return std::filesystem::path(lineAsset).replace_extension(".json").string();
}

bool isLineAsset(std::string_view asset) {
    constexpr auto digits = 32;
    if (asset.size() != prefix.size() + digits + ending.size()) return false;
    auto const hash = asset.substr(prefix.size(), digits);
    return asset.starts_with(prefix) && asset.ends_with(ending) &&
           hash.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

bool hasWords(std::string_view text) { return canBeSaid(text); }

bool needsGeneration(VoiceoverSegment const& segment, VoiceSettings const& voice) {
    if (!hasWords(segment.text)) return false;
    if (segment.isDirty || !segment.audioAsset) return true;
    return isLineAsset(*segment.audioAsset) && *segment.audioAsset != lineAsset(segment.text, voice);
}

bool needsGeneration(VoiceoverPlan const& plan) {
    return std::ranges::any_of(plan.segments,
                               [&](auto const& segment) { return needsGeneration(segment, plan.voice); });
}

}
