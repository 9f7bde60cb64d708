#include <TavaroVoice/Voiceover/Private/HeldFrames.h>

#include <TavaroCore/Editing/RangeEdits.h>
#include <TavaroCore/Editing/TimedLists.h>
#include <TavaroCore/Project/DemoProject.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <set>
#include <span>

namespace tavaro {

namespace {

constexpr double tolerance = 0.000001; // seconds

// Version 8 is for identifiers of one's own making; no random one begins so. Parts of a clip that is split have it too.
constexpr std::array<std::uint8_t, 7> mark{'T', 'v', 'H', 'o', 'l', 'd', 0x80};

/// FNV-1a.
std::uint64_t hashed(UUID const& id) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (auto const byte : id.bytes) hash = (hash ^ byte) * 0x100000001B3;
    return hash;
}

/// Whether a clip is the frame held under that id, or was split off it.
bool isPartOf(VideoClip const& clip, UUID const& held) {
    constexpr std::size_t handedOn = 12; // bytes that `Timeline::split` leaves as they are
    return std::ranges::equal(std::span(clip.id.bytes).first(handedOn), std::span(held.bytes).first(handedOn));
}

/// Where a time is once the span is taken out.
double without(TimeRange const& span, double time) {
    if (time >= span.end() - tolerance) return time - span.duration;
    return std::min(time, std::max(span.start, 0.0));
}

template<class Item> void move(Item& item, double by) {
    startOf(item) += by;
    if constexpr (requires { item.words; }) {
        for (auto& word : item.words) {
            word.start += by;
            word.end += by;
        }
    }
}

void withdraw(DemoProject& project, VideoClip const& held) {
    auto const span = held.range();
    std::erase_if(project.timeline.clips, [&](VideoClip const& clip) { return clip.id == held.id; });
    project.timeline.closeGaps();
    forEachTimedList(project, [&](auto& items) {
        for (auto& item : items) move(item, without(span, startOf(item)) - startOf(item));
    });
    if (!project.voiceover) return;
    for (auto& segment : project.voiceover->segments)
        if (segment.anchor) segment.anchor = without(span, *segment.anchor);
}

}

UUID heldFrameID(UUID const& line) {
    UUID id;
    std::ranges::copy(mark, id.bytes.begin());
    auto hash = hashed(line);
    for (std::size_t i = mark.size(); i < id.bytes.size(); ++i) {
        id.bytes[i] = static_cast<std::uint8_t>(hash);
        hash = (hash >> 7) | (hash << 57); // nine bytes of sixty-four bits
    }
    id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3F) | 0x80);
    return id;
}

bool isHeldForVoiceover(VideoClip const& clip) {
    return clip.speed == 0 && std::ranges::equal(mark, std::span(clip.id.bytes).first(mark.size()));
}

std::vector<VideoClip> heldFrames(DemoProject const& project) {
    std::vector<VideoClip> held;
    std::ranges::copy_if(project.timeline.clips, std::back_inserter(held), isHeldForVoiceover);
    return held;
}

void holdFrame(DemoProject& project, double at, double seconds, UUID line) {
    std::set<UUID> before;
    for (auto const& clip : project.timeline.clips) before.insert(clip.id);
    insertTime(project, at, seconds);
    for (auto& clip : project.timeline.clips) {
        bool const isHeld = clip.speed == 0 && clip.duration == seconds && !before.contains(clip.id);
        if (isHeld) clip.id = heldFrameID(line);
        if (isHeld) return;
    }
}

double endWithoutHeldFrame(DemoProject const& project) {
    auto const& clips = project.timeline.clips;
    auto const last = heldFrameID({});
    double end = project.duration();
    for (auto clip = clips.rbegin(); clip != clips.rend() && isPartOf(*clip, last); ++clip) end = clip->start;
    return end;
}

void withdrawHeldFrames(DemoProject& project) {
    auto const held = heldFrames(project);
    for (auto clip = held.rbegin(); clip != held.rend(); ++clip) withdraw(project, *clip);
}

}
