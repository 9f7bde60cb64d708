#include <Tavaro/Model/Operations/Private/DocumentValues.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSON.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <type_traits>

namespace tavaro {

namespace {

constexpr double anything = 1e9; // no number of a document is further from zero
constexpr double longest = 1e7;  // seconds
constexpr double unlimited = 1e6;

struct Limits {
    double least = -anything;
    double most = anything;
};

constexpr Limits share{0, 1};
constexpr Limits length{0, longest}; // seconds
constexpr Limits time{-longest, longest};
constexpr Limits extent{0, unlimited}; // pixels, or a factor that may be 0
constexpr Limits factor{0.01, 100};
constexpr Limits side{16, 16384};

/// The limits of a record's fields, by name; a field that is not listed takes any number within `anything`.
struct NamedLimits {
    std::string_view name;
    Limits limits;
};

template<class Record> constexpr auto limitsOf = std::array<NamedLimits, 0>{};

template<> constexpr auto limitsOf<RGBAColor> =
    std::array{NamedLimits{"r", share}, NamedLimits{"g", share}, NamedLimits{"b", share}, NamedLimits{"a", share}};
template<> constexpr auto limitsOf<TimeRange> = std::array{NamedLimits{"start", time}, NamedLimits{"duration", length}};
template<> constexpr auto limitsOf<TitleCard> =
    std::array{NamedLimits{"duration", length}, NamedLimits{"fontSize", extent}};
template<> constexpr auto limitsOf<ScreenStyle> = std::array{
    NamedLimits{"padding", share},       NamedLimits{"cornerRadius", extent}, NamedLimits{"shadowRadius", extent},
    NamedLimits{"shadowOpacity", share}, NamedLimits{"borderWidth", extent},  NamedLimits{"inset", share}};
template<> constexpr auto limitsOf<CursorSettings> = std::array{
    NamedLimits{"size", extent},          NamedLimits{"smoothing", share},  NamedLimits{"clickDuration", length},
    NamedLimits{"idleHideAfter", length}, NamedLimits{"motionBlur", share}, NamedLimits{"clickSoundVolume", share}};
template<> constexpr auto limitsOf<CameraSettings> =
    std::array{NamedLimits{"size", extent},        NamedLimits{"padding", share},   NamedLimits{"shadowOpacity", share},
               NamedLimits{"borderWidth", extent}, NamedLimits{"faceZoom", factor}, NamedLimits{"lookStrength", share},
               NamedLimits{"sharpen", extent}};
template<> constexpr auto limitsOf<CanvasLayout::Split> = std::array{NamedLimits{"cameraFraction", share}};
template<> constexpr auto limitsOf<BackgroundStyle::ImageFile> = std::array{NamedLimits{"blur", extent}};
template<> constexpr auto limitsOf<LayoutCue> = std::array{NamedLimits{"time", time}};
template<> constexpr auto limitsOf<CameraMove> = std::array{NamedLimits{"time", time}};
template<> constexpr auto limitsOf<FaceSample> = std::array{NamedLimits{"t", time}};
template<> constexpr auto limitsOf<TranscriptWord> =
    std::array{NamedLimits{"start", time}, NamedLimits{"end", time}, NamedLimits{"confidence", share}};
template<> constexpr auto limitsOf<ZoomEvent> =
    std::array{NamedLimits{"start", time},     NamedLimits{"duration", length}, NamedLimits{"rampIn", length},
               NamedLimits{"rampOut", length}, NamedLimits{"scale", factor},    NamedLimits{"motionBlur", share},
               NamedLimits{"loupeSize", share}};
template<> constexpr auto limitsOf<Overlay> =
    std::array{NamedLimits{"start", time}, NamedLimits{"duration", length}, NamedLimits{"fontSize", extent},
               NamedLimits{"animationDuration", length}};
template<> constexpr auto limitsOf<CaptionTrack> = std::array{NamedLimits{"fontSize", extent}};
template<> constexpr auto limitsOf<CaptionCue> =
    std::array{NamedLimits{"start", time}, NamedLimits{"duration", length}};
template<> constexpr auto limitsOf<CaptionWord> = std::array{NamedLimits{"start", time}, NamedLimits{"end", time}};
template<> constexpr auto limitsOf<AudioTrack> = std::array{
    NamedLimits{"gain", extent}, NamedLimits{"noiseReductionStrength", share}, NamedLimits{"duckAmount", share}};
template<> constexpr auto limitsOf<AudioClip> =
    std::array{NamedLimits{"start", time},  NamedLimits{"sourceStart", time}, NamedLimits{"duration", length},
               NamedLimits{"gain", extent}, NamedLimits{"fadeIn", length},    NamedLimits{"fadeOut", length},
               NamedLimits{"speed", factor}};
template<> constexpr auto limitsOf<SilenceSpan> =
    std::array{NamedLimits{"start", time}, NamedLimits{"duration", length}};
template<> constexpr auto limitsOf<VoiceoverPlan> = std::array{NamedLimits{"duckAmount", share}};
template<> constexpr auto limitsOf<VoiceoverSegment> =
    std::array{NamedLimits{"anchor", time}, NamedLimits{"audioDuration", length}, NamedLimits{"start", time},
               NamedLimits{"trailingPause", length}};
template<> constexpr auto limitsOf<RedactionTrack> = std::array{NamedLimits{"start", time}, NamedLimits{"end", time}};
template<> constexpr auto limitsOf<RedactionKeyframe> = std::array{NamedLimits{"t", time}};
template<> constexpr auto limitsOf<Size2> = std::array{NamedLimits{"width", side}, NamedLimits{"height", side}};
template<> constexpr auto limitsOf<ExportSettings> =
    std::array{NamedLimits{"fps", {1, 240}}, NamedLimits{"bitrateOverride", {1, anything}}};

template<RecordType R> constexpr Limits limitsFor(std::string_view name) {
    for (auto const& each : limitsOf<R>) {
        if (each.name == name) return each.limits;
    }
    return {};
}

template<RecordType R> constexpr bool limitsFieldsOnly() {
    for (auto const& each : limitsOf<R>) {
        bool isField = false;
        forEachField<R>([&](auto const& field) { isField = isField || field.name == each.name; });
        if (!isField) return false;
    }
    return true;
}

/// Where a value is: written out only where something is wrong with it, since a document has a hundred thousand of
/// them.
struct Path {
    Path const* before = nullptr;
    std::string_view name = {}; // of a field or a case
    std::size_t index = 0;      // of an item, where there is no name

    std::string text() const {
        auto const above = before ? before->text() : std::string();
        if (name.empty()) return fmt::format("{}[{}]", above, index);
        return above.empty() ? std::string(name) : fmt::format("{}.{}", above, name);
    }
};

/// Walks values with their paths and gathers what is out of its limits.
class Problems {
public:
    template<class T> void look(T const& value, Limits limits, Path const& path) {
        if constexpr (std::is_arithmetic_v<T> && !std::is_same_v<T, bool>)
            lookAtNumber(static_cast<double>(value), limits, path);
        else if constexpr (RecordType<T>)
            lookInside(value, path);
        else if constexpr (CaseType<T>)
            std::visit(
                [&](auto const& content) {
                    look(content, {}, {&path, T::caseNames[value.content.index()]});
                },
                value.content);
    }
    template<class T> void look(std::optional<T> const& value, Limits limits, Path const& path) {
        if (value) look(*value, limits, path);
    }
    template<class T> void look(CopyOnWrite<T> const& value, Limits limits, Path const& path) {
        look(*value, limits, path);
    }
    template<class T> void look(std::vector<T> const& list, Limits limits, Path const& path) {
        for (std::size_t i = 0; i < list.size(); ++i) look(list[i], limits, {&path, {}, i});
        if constexpr (requires(T item) { item.id <=> UUID{}; }) lookForTwins(list, path);
    }

    std::set<std::string> found;

private:
    template<class R> void lookInside(R const& record, Path const& path) {
        static_assert(limitsFieldsOnly<R>());
        forEachField<R>([&](auto const& field) {
            look(record.*field.member, limitsFor<R>(field.name), Path{&path, field.name});
        });
    }
    /// Who edits an item by its identity means one.
    template<class T> void lookForTwins(std::vector<T> const& list, Path const& path) {
        std::map<UUID, std::size_t> known;
        for (std::size_t i = 0; i < list.size(); ++i) {
            auto const [first, isNew] = known.try_emplace(list[i].id, i);
            if (isNew) continue;
            found.insert(fmt::format("{0}[{1}].id: {0}[{2}] has the same, {3}", path.text(), i, first->second,
                                     list[i].id.text()));
        }
    }
    void lookAtNumber(double value, Limits limits, Path const& path) {
        if (value >= limits.least && value <= limits.most) return;
        found.insert(fmt::format("{}: expected a number from {} to {}, found {}", path.text(), limits.least,
                                 limits.most, value));
    }
};

/// Lists and sentences show it whole.
void lookAtName(std::string const& name, std::set<std::string>& problems) {
    constexpr std::size_t mostCharacters = 1000;
    auto const isControl = [](unsigned char c) { return c < 0x20 || c == 0x7F; };
    auto const beginsCharacter = [](unsigned char c) { return (c & 0xC0) != 0x80; };
    if (std::ranges::any_of(name, isControl)) problems.insert("name: expected no line breaks or control characters");
    auto const characters = std::ranges::count_if(name, beginsCharacter);
    if (static_cast<std::size_t>(characters) <= mostCharacters) return;
    problems.insert(fmt::format("name: expected at most {} characters, found {}", mostCharacters, characters));
}

}

std::set<std::string> valueProblems(DemoProject const& project, std::set<std::string_view> const& fields) {
    Problems problems;
    forEachField<DemoProject>([&](auto const& field) {
        if (fields.contains(field.name)) problems.look(project.*field.member, {}, Path{nullptr, field.name});
    });
    if (fields.contains("name")) lookAtName(project.name, problems.found);
    return problems.found;
}

}
