#include "RandomEdits.h"

#include <Tavaro/Studio/Lists/DocumentItems.h>

#include <TavaroCore/Editing/ClipEdits.h>
#include <TavaroCore/Editing/TimelineEdits.h>

#include <algorithm>
#include <functional>

namespace tavaro {

namespace {

/// In any order, so that what is told of it has to be right for more than the usual.
template<class Item> void mixUp(std::vector<Item>& items, RandomDocument& random) {
    if (items.empty()) return;
    auto const size = static_cast<int>(items.size());
    switch (random.below(5)) {
    case 0: std::rotate(items.begin(), items.begin() + random.below(size), items.end()); break;
    case 1: items.erase(items.begin() + random.below(size)); break;
    case 2: {
        auto copy = items[static_cast<std::size_t>(random.below(size))];
        copy.id = UUID::random();
        items.insert(items.begin() + random.below(size + 1), copy);
        break;
    }
    case 3:
        for (auto i = size - 1; i > 0; --i)
            std::swap(items[static_cast<std::size_t>(i)], items[static_cast<std::size_t>(random.below(i + 1))]);
        break;
    default: std::erase_if(items, [&](auto const&) { return random.below(2) == 0; }); std::ranges::reverse(items);
    }
}

void mixUpOneList(DemoProject& project, RandomDocument& random) {
    int left = random.below(10);
    forEachItemList(project, [&](auto& items) {
        // Clips and tracks stay, since the other edits need them.
        using Item = typename std::remove_cvref_t<decltype(items)>::value_type;
        if constexpr (!std::same_as<Item, VideoClip> && !std::same_as<Item, AudioTrack>) {
            if (left-- == 0) mixUp(items, random);
        }
    });
}

}

void editAtRandom(DemoProject& project, RandomDocument& random) {
    auto const length = project.duration();
    auto const at = random.time(0, std::max(length, 1.0));
    switch (random.below(7)) {
    case 0:
        if (length > 2) removeTimeRange(project, at, random.time(0, 1));
        break;
    case 1: splitClip(project, at); break;
    case 2: {
        auto const& clips = project.timeline.clips;
        if (!clips.empty() && clips.size() < 12)
            duplicateClip(project, clips[static_cast<std::size_t>(random.below(static_cast<int>(clips.size())))].id);
        break;
    }
    case 3:
        for (auto& zoom : project.zoomEvents) zoom.scale = 1 + random.below(8) / 4.0;
        break;
    case 4: rippleInsert(project, at, 1); break;
    default: mixUpOneList(project, random);
    }
}

DemoProject fullDocument(RandomDocument& random) {
    auto project = random.make();
    auto const length = project.duration();
    for (int i = 0; i < 4; ++i) {
        project.zoomEvents.push_back({.start = random.time(0, length - 1), .duration = 1});
        project.overlays.push_back({.start = random.time(0, length - 1), .duration = 1});
        project.silences.push_back({.start = random.time(0, length - 1), .duration = 1});
        project.captions.cues.push_back({.start = random.time(0, length - 1), .duration = 1, .text = "said"});
        project.layoutCues.push_back({.time = random.time(0, length)});
        project.cameraMoves.push_back({.time = random.time(0, length)});
        project.redactions.edit().push_back({.label = "name", .start = 0, .end = 1});
    }
    project.voiceover.emplace().segments = {{.text = "one"}, {.text = "two", .start = 1}};
    return project;
}

}
