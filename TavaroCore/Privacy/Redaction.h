#pragma once

#include <TavaroCore/Records/Date.h>
#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroCore/Values/TimeRange.h>

#include <array>
#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

enum class SensitiveKind { email, phone, apiKey, token, privateKey, card, secret, custom, name };

constexpr std::array<std::string_view, 9> namesOf(SensitiveKind) {
    return {"email", "phone", "apiKey", "token", "privateKey", "card", "secret", "custom", "name"};
}

enum class RedactionStyle { mask, blur };

constexpr std::array<std::string_view, 2> namesOf(RedactionStyle) { return {"mask", "blur"}; }

struct RedactionKeyframe {
    double t = 0;
    NormalizedRect rect;

    static constexpr auto fields = std::tuple{
        field("t", &RedactionKeyframe::t),
        field("rect", &RedactionKeyframe::rect),
    };
    bool operator==(RedactionKeyframe const&) const = default;
};
static_assert(listsEveryField<RedactionKeyframe>);

struct RedactionTrack {
    UUID id = UUID::random();
    SensitiveKind kind = SensitiveKind::custom;
    std::string label;
    std::string textHash; // hash of the hidden text, never the text itself
    std::optional<std::string> asset;
    double start = 0;
    double end = 0;
    std::vector<RedactionKeyframe> keyframes;
    RedactionStyle style = RedactionStyle::mask;
    bool isEnabled = true;
    bool isAutomatic = false;

    double duration() const { return end - start; }
    /// Where it is at that many seconds of its asset: on the way between two keyframes, which ascend, and held before
    /// the first and after the last. It has one at least.
    NormalizedRect areaAt(double seconds) const;
    /// The keyframe of the picture that is shown then, made where there is none: there it is where it was.
    RedactionKeyframe& ensureKeyframe(double seconds);
    /// The place in the list of the one that is there.
    std::optional<std::size_t> keyframeAt(double seconds) const;

    static constexpr auto fields = std::tuple{
        field("id", &RedactionTrack::id),
        field("kind", &RedactionTrack::kind),
        field("label", &RedactionTrack::label),
        field("textHash", &RedactionTrack::textHash),
        field("asset", &RedactionTrack::asset),
        field("start", &RedactionTrack::start),
        field("end", &RedactionTrack::end),
        field("keyframes", &RedactionTrack::keyframes),
        field("style", &RedactionTrack::style),
        field("isEnabled", &RedactionTrack::isEnabled),
        field("isAutomatic", &RedactionTrack::isAutomatic),
    };
    bool operator==(RedactionTrack const&) const = default;
};
static_assert(listsEveryField<RedactionTrack>);

/// What the privacy scan looks for.
struct RedactionSettings {
    std::set<SensitiveKind> kinds = {SensitiveKind::email, SensitiveKind::phone,      SensitiveKind::apiKey,
                                     SensitiveKind::token, SensitiveKind::privateKey, SensitiveKind::card,
                                     SensitiveKind::secret};
    std::vector<std::string> customWords;
    std::vector<std::string> customPatterns;
    bool prefersBlur = false;

    static constexpr auto fields = std::tuple{
        field("kinds", &RedactionSettings::kinds),
        field("customWords", &RedactionSettings::customWords),
        field("customPatterns", &RedactionSettings::customPatterns),
        field("prefersBlur", &RedactionSettings::prefersBlur),
    };
    bool operator==(RedactionSettings const&) const = default;
};
static_assert(listsEveryField<RedactionSettings>);

struct RedactionScanInfo {
    Date date = Date::now();
    RedactionSettings settings;    // in force at the scan
    std::vector<TimeRange> ranges; // scanned

    static constexpr auto fields = std::tuple{
        field("date", &RedactionScanInfo::date),
        field("settings", &RedactionScanInfo::settings),
        field("ranges", &RedactionScanInfo::ranges),
    };
    bool operator==(RedactionScanInfo const&) const = default;
};
static_assert(listsEveryField<RedactionScanInfo>);

}
