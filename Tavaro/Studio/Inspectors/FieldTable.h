#pragma once

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/Fields.h>

#include <array>
#include <string_view>

namespace tavaro {

enum class FieldAccess {
    editable,
    readOnly,
    hidden, // identities, what has lists or commands of its own, and what no person chooses
};

/// What an inspector says of a field: the one table of labels, units and ranges. A field without a line here is shown
/// with a label made of its name. Ranges are those of sliders, in the document's numbers; a field takes what the checks
/// of a patch take.
struct FieldFacts {
    std::string_view name;
    std::string_view label = {};
    std::string_view unit = {};
    double least = 0;
    double most = 0; // both 0: a number without a slider
    double step = 1;
    double shownFactor = 1; // what is shown is the number times this: 100 for shares in per cent
    FieldAccess access = FieldAccess::editable;
    bool isFile = false; // a text that names a media file of the project
};

namespace facts {

constexpr FieldFacts plain(std::string_view name, std::string_view label) { return {.name = name, .label = label}; }
constexpr FieldFacts hidden(std::string_view name) { return {.name = name, .access = FieldAccess::hidden}; }
constexpr FieldFacts file(std::string_view name, std::string_view label) {
    return {.name = name, .label = label, .isFile = true};
}
constexpr FieldFacts share(std::string_view name, std::string_view label, double most = 1) {
    return {.name = name, .label = label, .unit = "%", .most = most, .step = 0.01, .shownFactor = 100};
}
constexpr FieldFacts pixels(std::string_view name, std::string_view label, double most) {
    return {.name = name, .label = label, .unit = "px", .most = most};
}
constexpr FieldFacts seconds(std::string_view name, std::string_view label, double most) {
    return {.name = name, .label = label, .unit = "s", .most = most, .step = 0.05};
}
/// Seconds of the film or the recording, of which the length alone sets an end.
constexpr FieldFacts time(std::string_view name, std::string_view label) {
    return {.name = name, .label = label, .unit = "s", .step = 0.01};
}
constexpr FieldFacts times(std::string_view name, std::string_view label, double least, double most) {
    return {.name = name, .label = label, .unit = "×", .least = least, .most = most, .step = 0.05};
}
constexpr FieldFacts number(std::string_view name, std::string_view label, double least, double most, double step) {
    return {.name = name, .label = label, .least = least, .most = most, .step = step};
}
constexpr FieldFacts readOnly(FieldFacts facts) {
    facts.access = FieldAccess::readOnly;
    return facts;
}

}

/// The lines of a record's fields.
template<class Record> inline constexpr auto factsOf = std::array<FieldFacts, 0>{};

template<> inline constexpr auto factsOf<ScreenStyle> = std::array{
    facts::share("padding", "Padding", 0.4),
    facts::pixels("cornerRadius", "Corner Radius", 120),
    facts::pixels("shadowRadius", "Shadow Radius", 200),
    facts::share("shadowOpacity", "Shadow Opacity"),
    FieldFacts{.name = "shadowOffsetY", .label = "Shadow Offset", .unit = "px", .least = -100, .most = 100},
    facts::pixels("borderWidth", "Border Width", 40),
    facts::plain("borderColor", "Border Color"),
    facts::plain("frame", "Frame"),
    facts::share("inset", "Inset", 0.2),
    facts::plain("insetColor", "Inset Color"),
    facts::plain("frameTint", "Frame Tint"),
};
template<> inline constexpr auto factsOf<CursorSettings> = std::array{
    facts::plain("isVisible", "Show Pointer"),
    facts::plain("style", "Pointer Style"),
    facts::times("size", "Pointer Size", 0.5, 5),
    facts::share("smoothing", "Smoothing"),
    facts::plain("clickEffect", "Click Effect"),
    facts::plain("clickColor", "Click Color"),
    facts::seconds("clickDuration", "Click Duration", 2),
    facts::plain("tint", "Pointer Tint"),
    facts::seconds("idleHideAfter", "Hide When Still After", 10),
    facts::share("motionBlur", "Pointer Motion Blur"),
    facts::plain("loops", "Return to the Start"),
    facts::plain("clickSound", "Click Sound"),
    facts::share("clickSoundVolume", "Click Sound Volume"),
};
template<> inline constexpr auto factsOf<CameraSettings> = std::array{
    facts::plain("isEnabled", "Show Camera"),
    facts::plain("shape", "Camera Shape"),
    facts::plain("placement", "Camera Place"),
    facts::plain("position", "Free Position"),
    facts::share("size", "Camera Size"),
    facts::share("padding", "Camera Padding", 0.2),
    facts::share("shadowOpacity", "Camera Shadow"),
    facts::pixels("borderWidth", "Camera Border Width", 40),
    facts::plain("borderColor", "Camera Border Color"),
    facts::plain("mirrored", "Mirrored"),
    facts::plain("avoidsContent", "Avoid Content"),
    facts::plain("fillsCanvas", "Fill Canvas"),
    facts::plain("cutout", "Cut Out Person"),
    facts::plain("tracksFace", "Follow Face"),
    facts::times("faceZoom", "Face Zoom", 1, 4),
    facts::plain("hidesWhenSilent", "Hide When Silent"),
    facts::plain("crop", "Camera Crop"),
    facts::plain("look", "Look"),
    facts::share("lookStrength", "Look Strength"),
    facts::file("lutAsset", "Color Table"),
    facts::share("sharpen", "Sharpen"),
};
template<> inline constexpr auto factsOf<CanvasLayout::Split> = std::array{
    facts::plain("arrangement", "Arrangement"),
    facts::share("cameraFraction", "Camera Share"),
};
template<> inline constexpr auto factsOf<Gradient> = std::array{facts::plain("from", "From"), facts::plain("to", "To")};
template<> inline constexpr auto factsOf<BackgroundStyle::Solid> =
    std::array{facts::plain("colour", "Background Color")};
template<> inline constexpr auto factsOf<BackgroundStyle::LinearGradient> = std::array{
    facts::plain("gradient", "Gradient"),
    FieldFacts{.name = "angle", .label = "Gradient Angle", .unit = "°", .most = 360},
};
template<> inline constexpr auto factsOf<BackgroundStyle::RadialGradient> =
    std::array{facts::plain("gradient", "Gradient"), facts::plain("center", "Gradient Center")};
template<> inline constexpr auto factsOf<BackgroundStyle::Mesh> = std::array{
    facts::plain("colors", "Mesh Colors"),
    facts::number("speed", "Mesh Speed", 0, 2, 0.05),
    facts::number("seed", "Mesh Shape", 0, 100, 1),
};
template<> inline constexpr auto factsOf<BackgroundStyle::Aurora> = std::array{
    facts::plain("colors", "Aurora Colors"),
    facts::number("speed", "Aurora Speed", 0, 2, 0.05),
    facts::number("seed", "Aurora Shape", 0, 100, 1),
};
template<> inline constexpr auto factsOf<BackgroundStyle::ImageFile> =
    std::array{facts::file("assetName", "Background Image"), facts::pixels("blur", "Background Blur", 100)};
template<> inline constexpr auto factsOf<TitleCard> = std::array{
    facts::plain("text", "Card Text"),
    facts::plain("subtitle", "Card Subtitle"),
    facts::seconds("duration", "Card Duration", 10),
    facts::plain("background", "Card Background"),
    facts::plain("textColor", "Card Text Color"),
    facts::pixels("fontSize", "Card Font Size", 200),
    facts::plain("animation", "Card Animation"),
};
template<> inline constexpr auto factsOf<CaptionTrack> = std::array{
    facts::plain("isEnabled", "Show Captions"),
    facts::plain("style", "Caption Style"),
    facts::hidden("cues"),
    facts::plain("position", "Caption Position"),
    facts::pixels("fontSize", "Caption Font Size", 120),
    facts::plain("color", "Caption Color"),
    facts::plain("backgroundColor", "Caption Background"),
    facts::plain("highlightColor", "Spoken Word Color"),
    facts::plain("reveal", "Caption Reveal"),
    facts::plain("animation", "Caption Animation"),
    facts::plain("font", "Caption Font"),
};
template<> inline constexpr auto factsOf<VoiceSettings> = std::array{
    facts::plain("voiceID", "Voice Identifier"),
    facts::plain("voiceName", "Voice Name"),
    facts::plain("modelID", "Voice Model"),
    facts::share("stability", "Voice Stability"),
    facts::share("similarityBoost", "Voice Similarity"),
    facts::share("style", "Voice Style"),
    facts::times("speed", "Voice Speed", 0.5, 2),
    facts::plain("useSpeakerBoost", "Speaker Boost"),
};
template<> inline constexpr auto factsOf<VoiceoverPlan> = std::array{
    facts::hidden("segments"),
    facts::plain("voice", "Voice"),
    facts::plain("ducksOtherAudio", "Lower Other Sound"),
    facts::share("duckAmount", "Lower By"),
    facts::plain("stretchesVideoToFit", "Stretch Video to Fit"),
};
template<> inline constexpr auto factsOf<RedactionSettings> = std::array{
    facts::plain("kinds", "Look For"),
    facts::plain("customWords", "Own Words"),
    facts::plain("customPatterns", "Own Patterns"),
    facts::plain("prefersBlur", "Blur Instead of Cover"),
};
template<> inline constexpr auto factsOf<ExportSettings> = std::array{
    facts::plain("size", "Film Size"),
    FieldFacts{.name = "fps", .label = "Frame Rate", .unit = "fps", .least = 1, .most = 120},
    facts::plain("codec", "Codec"),
    facts::plain("container", "File Type"),
    facts::plain("fit", "Content Fit"),
    FieldFacts{.name = "bitrateOverride", .label = "Bit Rate", .unit = "bit/s", .least = 1e6, .most = 1e8, .step = 1e6},
    facts::plain("includeWatermark", "Watermark"),
    facts::hidden("presetID"),
    facts::plain("includesAudio", "Sound in the Film"),
};
template<> inline constexpr auto factsOf<DemoProject> = std::array{
    facts::hidden("version"),
    facts::hidden("id"),
    facts::plain("name", "Name"),
    facts::hidden("createdAt"),
    facts::hidden("modifiedAt"),
    facts::plain("mode", "Kind of Demo"),
    facts::hidden("sourceSize"),
    facts::plain("canvas", "Canvas Size"),
    facts::hidden("timeline"),
    facts::hidden("assetDurations"),
    facts::hidden("metadata"),
    facts::plain("layout", "Layout"),
    facts::plain("intro", "Intro Card"),
    facts::plain("outro", "Outro Card"),
    facts::plain("background", "Background"),
    facts::plain("screen", "Screen"),
    facts::plain("cursor", "Pointer"),
    facts::plain("camera", "Camera"),
    facts::hidden("cameraAsset"),
    FieldFacts{.name = "cameraOffset", .label = "Camera Offset", .unit = "s", .least = -2, .most = 2, .step = 0.01},
    facts::hidden("layoutCues"),
    facts::hidden("cameraMoves"),
    facts::hidden("cameraFaces"),
    facts::hidden("transcript"),
    facts::plain("cameraDirectorStyle", "Camera Director"),
    facts::hidden("screenSceneChanges"),
    facts::plain("sourceCrop", "Crop"),
    facts::hidden("zoomEvents"),
    facts::hidden("overlays"),
    facts::plain("captions", "Captions"),
    facts::hidden("audioTracks"),
    facts::hidden("silences"),
    facts::plain("voiceover", "Voice-Over"),
    facts::hidden("redactions"),
    facts::plain("redactionSettings", "Privacy"),
    facts::hidden("redactionScan"),
    facts::plain("export", "Export"),
};

template<> inline constexpr auto factsOf<VideoClip> = std::array{
    facts::hidden("id"),
    facts::readOnly(facts::plain("asset", "Recording")),
    facts::readOnly(facts::time("start", "Start")),
    facts::readOnly(facts::time("sourceStart", "Start in the Recording")),
    facts::readOnly(facts::time("duration", "Duration")),
    facts::times("speed", "Clip Speed", 0.25, 16),
    facts::hidden("transitionIn"),
    facts::plain("isMuted", "Muted"),
};
template<> inline constexpr auto factsOf<ZoomEvent> = std::array{
    facts::hidden("id"),
    facts::time("start", "Zoom Start"),
    facts::time("duration", "Zoom Duration"),
    facts::seconds("rampIn", "Zoom In", 3),
    facts::seconds("rampOut", "Zoom Out", 3),
    facts::plain("center", "Zoom Center"),
    facts::times("scale", "Zoom Scale", 1, 6),
    facts::plain("easing", "Zoom Easing"),
    facts::share("motionBlur", "Zoom Motion Blur"),
    facts::hidden("isAutomatic"),
    facts::plain("followsCursor", "Follow Pointer"),
    facts::plain("style", "Zoom Style"),
    facts::share("loupeSize", "Loupe Size", 0.5),
    facts::plain("note", "Note"),
};
template<> inline constexpr auto factsOf<Overlay> = std::array{
    facts::hidden("id"),
    facts::plain("kind", "Overlay Kind"),
    facts::time("start", "Overlay Start"),
    facts::time("duration", "Overlay Duration"),
    facts::plain("position", "Overlay Position"),
    facts::pixels("fontSize", "Overlay Font Size", 200),
    facts::plain("color", "Overlay Color"),
    facts::plain("backgroundColor", "Overlay Background"),
    facts::plain("animationIn", "Animation In"),
    facts::plain("animationOut", "Animation Out"),
    facts::seconds("animationDuration", "Animation Duration", 2),
    facts::hidden("isAutomatic"),
};
template<> inline constexpr auto factsOf<OverlayKind::Title> =
    std::array{facts::plain("text", "Title Text"), facts::plain("subtitle", "Title Subtitle")};
template<> inline constexpr auto factsOf<OverlayKind::Callout> = std::array{facts::plain("text", "Callout Text")};
template<> inline constexpr auto factsOf<OverlayKind::Keycap> = std::array{facts::plain("keys", "Keys")};
template<> inline constexpr auto factsOf<OverlayKind::Command> = std::array{facts::plain("text", "Command Text")};
template<> inline constexpr auto factsOf<OverlayKind::Code> =
    std::array{facts::plain("text", "Code Text"), facts::plain("language", "Code Language")};
template<> inline constexpr auto factsOf<OverlayKind::Blur> = std::array{facts::plain("rect", "Blurred Area")};
template<> inline constexpr auto factsOf<OverlayKind::Highlight> = std::array{facts::plain("rect", "Highlighted Area")};
template<> inline constexpr auto factsOf<OverlayKind::Arrow> =
    std::array{facts::plain("from", "Arrow From"), facts::plain("to", "Arrow To")};
template<> inline constexpr auto factsOf<OverlayKind::Box> = std::array{facts::plain("rect", "Box Area")};
template<> inline constexpr auto factsOf<OverlayKind::Mask> = std::array{facts::plain("rect", "Covered Area")};
template<> inline constexpr auto factsOf<CaptionCue> = std::array{
    facts::hidden("id"),
    facts::time("start", "Caption Start"),
    facts::time("duration", "Caption Duration"),
    facts::plain("text", "Caption Text"),
    facts::hidden("words"),
};
template<> inline constexpr auto factsOf<AudioClip> = std::array{
    facts::hidden("id"),
    facts::readOnly(facts::plain("asset", "Sound File")),
    facts::time("start", "Sound Start"),
    facts::readOnly(facts::time("sourceStart", "Start in the File")),
    facts::readOnly(facts::time("duration", "Sound Duration")),
    facts::share("gain", "Sound Volume", 2),
    facts::seconds("fadeIn", "Fade In", 5),
    facts::seconds("fadeOut", "Fade Out", 5),
    facts::readOnly(facts::times("speed", "Sound Speed", 0.25, 16)),
};
template<> inline constexpr auto factsOf<AudioTrack> = std::array{
    facts::hidden("id"),
    facts::readOnly(facts::plain("role", "Track")),
    facts::hidden("clips"),
    facts::share("gain", "Track Volume", 2),
    facts::plain("isMuted", "Track Muted"),
    facts::plain("noiseReduction", "Reduce Noise"),
    facts::share("noiseReductionStrength", "Noise Reduction"),
    facts::plain("voiceClarity", "Voice Clarity"),
    facts::plain("normalize", "Even Loudness"),
    facts::plain("duckedBy", "Lowered By"),
    facts::share("duckAmount", "Track Lowered By"),
};
template<> inline constexpr auto factsOf<SilenceSpan> = std::array{
    facts::hidden("id"),
    facts::time("start", "Silence Start"),
    facts::time("duration", "Silence Duration"),
    facts::plain("isRemoved", "Remove This Silence"),
};
template<> inline constexpr auto factsOf<LayoutCue> = std::array{
    facts::hidden("id"),
    facts::time("time", "Scene Time"),
    facts::plain("scene", "Scene"),
    facts::hidden("isAutomatic"),
    facts::readOnly(facts::plain("reason", "Reason")),
};
template<> inline constexpr auto factsOf<CameraMove> = std::array{
    facts::hidden("id"),
    facts::time("time", "Move Time"),
    facts::plain("placement", "Move To"),
    facts::plain("position", "Move to Free Position"),
    facts::hidden("isAutomatic"),
};
template<> inline constexpr auto factsOf<VoiceoverSegment> = std::array{
    facts::hidden("id"),
    facts::plain("text", "Spoken Text"),
    facts::time("anchor", "Pinned At"),
    facts::hidden("audioAsset"),
    facts::readOnly(facts::time("audioDuration", "Spoken Duration")),
    facts::time("start", "Voice-Over Start"),
    facts::seconds("trailingPause", "Pause Behind", 5),
    facts::hidden("isDirty"),
};
template<> inline constexpr auto factsOf<RedactionTrack> = std::array{
    facts::hidden("id"),
    facts::plain("kind", "What Is Hidden"),
    facts::plain("label", "Redaction Label"),
    facts::hidden("textHash"),
    facts::hidden("asset"),
    facts::time("start", "Redaction Start"),
    facts::time("end", "Redaction End"),
    facts::hidden("keyframes"),
    facts::plain("style", "Redaction Style"),
    facts::plain("isEnabled", "Redaction On"),
    facts::hidden("isAutomatic"),
};

/// The line of a field; null where the table has none.
template<RecordType R> constexpr FieldFacts const* factsFor(std::string_view name) {
    for (auto const& each : factsOf<R>) {
        if (each.name == name) return &each;
    }
    return nullptr;
}

}
