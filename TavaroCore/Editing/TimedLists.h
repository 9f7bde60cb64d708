#pragma once

#include <TavaroCore/Project/DemoProject.h>

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <type_traits>
#include <utility>
#include <vector>

/// Which lists of a document are placed in output time, and how an item of each is placed. Edits of the timeline walk
/// this one table, so that none can forget a list: a new list is one line in `forEachTimedList`.
namespace tavaro {

/// Calls `visit` with the vector of each list. The clips of the picture are not among them: each edit changes those
/// itself. Camera moves, redactions, faces and the transcript stay as they are by design.
template<class Project, class Visit>
requires std::same_as<std::remove_const_t<Project>, DemoProject>
void forEachTimedList(Project& project, Visit&& visit) {
    visit(project.zoomEvents);
    visit(project.overlays);
    visit(project.silences);
    visit(project.captions.cues); // their words go with them
    visit(project.layoutCues);    // points in time
    for (auto& track : project.audioTracks) visit(track.clips);
    if (project.voiceover) visit(project.voiceover->segments);
}

/// When an item begins.
template<class Item> double& startOf(Item& item) { return item.start; }
inline double& startOf(LayoutCue& cue) { return cue.time; }

/// The output span of an item; for a voice-over segment the length of its audio, or of the text once it is spoken.
template<class Item> TimeRange spanOf(Item const& item) { return item.range(); }
inline TimeRange spanOf(VoiceoverSegment const& segment) { return {segment.start, segment.duration()}; }

/// Rewrites a list in place, in order: `change` edits an item and says whether it stays.
template<class Item, class Change> void keepWhere(std::vector<Item>& items, Change&& change) {
    std::size_t kept = 0;
    for (auto& item : items) {
        if (!change(item)) continue;
        if (&items[kept] != &item) items[kept] = std::move(item);
        ++kept;
    }
    items.erase(items.begin() + static_cast<std::ptrdiff_t>(kept), items.end());
}

}
