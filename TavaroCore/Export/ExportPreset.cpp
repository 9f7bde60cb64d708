#include <TavaroCore/Export/ExportPreset.h>

#include <algorithm>
#include <vector>

namespace tavaro {

std::span<ExportPreset const> ExportPreset::all() {
    using enum VideoCodecChoice;
    using enum ExportContainer;
    using enum ContentFit;
    // clang-format off
    static std::vector<ExportPreset> const presets{
        {"youtube-4k", "YouTube", "3840 × 2160 · 60 fps", {3840, 2160}, 60, hevc, mp4, fit, {}},
        {"youtube-1080", "YouTube 1080p", "1920 × 1080 · 60 fps", {1920, 1080}, 60, h264, mp4, fit, {}},
        {"x", "X", "1920 × 1080 · 30 fps", {1920, 1080}, 30, h264, mp4, fit, {}},
        {"linkedin", "LinkedIn", "1080 × 1080 · 30 fps", {1080, 1080}, 30, h264, mp4, fit, {}},
        {"linkedin-45", "LinkedIn 4:5", "1080 × 1350 · 30 fps", {1080, 1350}, 30, h264, mp4, fit, {}},
        {"tiktok", "TikTok", "1080 × 1920 · 30 fps", {1080, 1920}, 30, h264, mp4, fit, {}},
        {"instagram", "Instagram Reels", "1080 × 1920 · 30 fps", {1080, 1920}, 30, h264, mp4, fit, {}},
        {"product-hunt", "Product Hunt", "3840 × 2160 · 30 fps", {3840, 2160}, 30, hevc, mp4, fit, {}},
        {"split-vertical", "Split Vertical", "1080 × 1920 · camera + screen", {1080, 1920}, 30, h264, mp4, fill, {}},
        {"prores", "ProRes 422", "3840 × 2160 · 60 fps", {3840, 2160}, 60, proRes422, mov, fit, {}},
        {"web", "Web", "1280 × 720 · 30 fps · small file", {1280, 720}, 30, h264, mp4, fit, 4'000'000},
        {"gif", "GIF", "Looping · for READMEs and chats", {960, 540}, 15, h264, gif, fit, {}},
    };
    // clang-format on
    return presets;
}

ExportPreset const* ExportPreset::withID(std::string_view id) {
    auto const presets = all();
    auto const found = std::ranges::find(presets, id, &ExportPreset::id);
    return found == presets.end() ? nullptr : &*found;
}

ExportSettings ExportPreset::settings() const {
    return {
        .size = size,
        .fps = fps,
        .codec = codec,
        .container = container,
        .fit = fit,
        .bitrateOverride = maxBitrate,
        .presetID = id,
    };
}

bool ExportPreset::isSuggestible() const {
    return codec != VideoCodecChoice::proRes422 && container != ExportContainer::gif && id != "split-vertical";
}

}
