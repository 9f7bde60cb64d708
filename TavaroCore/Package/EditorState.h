#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/UUID.h>

#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// What the editor's window looked like when it was closed. No part of the document: losing it loses nothing, and it is
/// not undone.
struct EditorState {
    double playhead = 0;                     // output seconds
    double timelineStart = 0;                // output seconds at the left edge of the timeline
    double timelineScale = 0;                // points a second; 0 shows the whole edit
    std::vector<UUID> selection;             // identities of the selected items
    std::string inspector;                   // the open inspector, by name
    std::vector<std::string> collapsedLanes; // lanes of the timeline that are folded up, by name
    bool snaps = true;                       // dragging catches on edges and the playhead

    static constexpr auto fields = std::tuple{
        field("playhead", &EditorState::playhead),
        field("timelineStart", &EditorState::timelineStart),
        field("timelineScale", &EditorState::timelineScale),
        field("selection", &EditorState::selection),
        field("inspector", &EditorState::inspector),
        field("collapsedLanes", &EditorState::collapsedLanes),
        field("snaps", &EditorState::snaps),
    };
    bool operator==(EditorState const&) const = default;
};
static_assert(listsEveryField<EditorState>);

std::string encodeEditorState(EditorState const& state);
/// Never fails: text that cannot be read is a state like new, times that make no sense are 0.
EditorState decodeEditorState(std::string_view json);

}
