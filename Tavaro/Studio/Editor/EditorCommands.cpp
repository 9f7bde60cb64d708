#include <Tavaro/Studio/Editor/EditorCommands.h>

#include <Tavaro/Studio/Editor/EditorSession.h>
#include <Tavaro/Studio/Editor/ItemEdits.h>

#include <TavaroCore/Editing/ClipEdits.h>

#include <array>

namespace tavaro {

namespace {

using Session = EditorSession;

bool always(Session const&) { return true; }
bool hasVideo(Session const& session) { return session.document().timeline.clip(session.playhead()) != nullptr; }
bool hasFilm(Session const& session) { return !session.document().timeline.clips.empty(); }
bool hasSelection(Session const& session) { return !session.selection().empty(); }
bool hasRange(Session const& session) { return session.range().duration > 0; }
bool hasSelectedClip(Session const& session) { return session.hasSelected(ItemKind::clip); }
bool hasTranscript(Session const& session) { return session.document().transcript.has_value(); }

/// Whether the playhead is inside of a clip, where it can be split and trimmed to.
bool isInsideClip(Session const& session) {
    auto const* clip = session.document().timeline.clip(session.playhead());
    return clip && session.playhead() - clip->start > 0.001 && clip->end() - session.playhead() > 0.001;
}

template<class Operation> void perform(Session& session) { session.perform(Operation{}); }

bool canMove(Session const& session) { return session.hasSelectedOf(Session::movedKinds); }
bool canTrim(Session const& session) { return session.hasSelectedOf(Session::trimmedKinds); }
void moveByFrames(Session& session, int frames) {
    session.moveSelected(frames / session.document().exportSettings.editingRate());
}

void trimTo(Session& session, ClipEdge edge) {
    auto const at = session.playhead();
    session.edit("Trim Clip", [&](DemoProject& project) {
        if (auto const* clip = project.timeline.clip(at)) trimClip(project, UUID(clip->id), edge, at);
    });
}

void markStart(Session& session) {
    auto const& range = session.range();
    auto const end = range.end() > session.playhead() ? range.end() : session.duration();
    session.setRange(session.playhead(), end - session.playhead());
}
void markEnd(Session& session) {
    auto const start = session.range().start < session.playhead() ? session.range().start : 0;
    session.setRange(start, session.playhead() - start);
}

void cutRange(Session& session) {
    auto const range = session.range();
    if (session.perform(operations::Cut{range.start, range.end()})) session.clearRange();
}
void keepRange(Session& session) {
    auto const range = session.range();
    if (session.perform(operations::Trim{range.start, range.end()})) session.clearRange();
}

bool isMuted(Session const& session) {
    for (auto const& clip : session.document().timeline.clips) {
        if (clip.isMuted && std::ranges::find(session.selection(), clip.id) != session.selection().end()) return true;
    }
    return false;
}

/// A held frame has none.
bool hasSpeed(Session const& session) {
    auto const* clip = session.document().timeline.clip(session.playhead());
    return hasRange(session) || hasSelectedClip(session) || (clip && clip->speed > 0);
}

KeyframePlace keyframePlace(Session const& session) {
    if (session.selection().size() != 1) return KeyframePlace::none;
    return tavaro::keyframePlace(session.document(), session.selection().front(), session.playhead());
}

using KeyframeEdit = void(DemoProject&, UUID const&, double);
void editKeyframe(Session& session, char const* title, KeyframeEdit edit) {
    session.edit(title, [&](DemoProject& project) { edit(project, session.selection().front(), session.playhead()); });
}

/// What is done by the window around the editor.
template<auto& name> void want(Session& session) { Q_EMIT session.wanted(QString::fromUtf8(name)); }
constexpr char exportName[] = "export", exportAgainName[] = "exportAgain", copyFrameName[] = "copyFrame",
               saveFrameName[] = "saveFrame", speedDialog[] = "speed", renameDialog[] = "rename",
               shortcutsDialog[] = "shortcuts";

template<int kind> void add(Session& session) {
    session.add(QString::fromUtf8(namesOf(ItemKind{})[static_cast<std::size_t>(kind)].data()));
}
constexpr int asNumber(ItemKind kind) { return static_cast<int>(kind); }

constexpr std::array commands{
    ListedCommand{"undo", "Undo", "Edit", "Ctrl+Z", [](Session const& s) { return s.project().undoName().has_value(); },
                  [](Session& s) { s.undo(); }},
    ListedCommand{"redo", "Redo", "Edit", "Ctrl+Shift+Z",
                  [](Session const& s) { return s.project().redoName().has_value(); }, [](Session& s) { s.redo(); }},
    ListedCommand{"cut", "Cut", "Edit", "Ctrl+X", hasSelection, [](Session& s) { s.cut(); }},
    ListedCommand{"copy", "Copy", "Edit", "Ctrl+C", hasSelection, [](Session& s) { s.copy(); }},
    ListedCommand{"paste", "Paste", "Edit", "Ctrl+V", [](Session const& s) { return s.canPaste(); },
                  [](Session& s) { s.pasteHere(); }},
    ListedCommand{"duplicate", "Duplicate", "Edit", "Ctrl+D", hasSelection, [](Session& s) { s.duplicateSelected(); }},
    ListedCommand{"delete", "Delete", "Edit", "Del", hasSelection, [](Session& s) { s.removeSelected(); }},
    ListedCommand{"selectAll", "Select All", "Edit", "Ctrl+A", always, [](Session& s) { s.selectAll(); }},
    ListedCommand{"clearSelection", "Select Nothing", "Edit", "Ctrl+Shift+A", hasSelection,
                  [](Session& s) { s.clearSelection(); }},
    ListedCommand{"moveEarlier", "Move One Frame Earlier", "Edit", "Alt+Left", canMove,
                  [](Session& s) { moveByFrames(s, -1); }},
    ListedCommand{"moveLater", "Move One Frame Later", "Edit", "Alt+Right", canMove,
                  [](Session& s) { moveByFrames(s, 1); }},
    ListedCommand{"startHere", "Start It at the Playhead", "Edit", "Alt+Q", canTrim,
                  [](Session& s) { s.trimSelected(ClipEdge::leading, s.playhead()); }},
    ListedCommand{"endHere", "End It at the Playhead", "Edit", "Alt+W", canTrim,
                  [](Session& s) { s.trimSelected(ClipEdge::trailing, s.playhead()); }},
    ListedCommand{"addKeyframe", "Add Keyframe", "Edit", "P",
                  [](Session const& s) { return keyframePlace(s) == KeyframePlace::free; },
                  [](Session& s) { editKeyframe(s, "Add Keyframe", addKeyframe); }},
    ListedCommand{"removeKeyframe", "Remove Keyframe", "Edit", "Shift+P",
                  [](Session const& s) { return keyframePlace(s) == KeyframePlace::taken; },
                  [](Session& s) { editKeyframe(s, "Remove Keyframe", removeKeyframe); }},

    ListedCommand{"split", "Split Clip", "Clip", "S", isInsideClip, [](Session& s) { s.split(s.playhead()); }},
    ListedCommand{"trimStart", "Trim Start to Playhead", "Clip", "Q", isInsideClip,
                  [](Session& s) { trimTo(s, ClipEdge::leading); }},
    ListedCommand{"trimEnd", "Trim End to Playhead", "Clip", "W", isInsideClip,
                  [](Session& s) { trimTo(s, ClipEdge::trailing); }},
    ListedCommand{"markStart", "Mark Start of Range", "Clip", "I", hasVideo, markStart},
    ListedCommand{"markEnd", "Mark End of Range", "Clip", "O", [](Session const& s) { return s.playhead() > 0; },
                  markEnd},
    ListedCommand{"clearRange", "Clear Range", "Clip", "X", hasRange, [](Session& s) { s.clearRange(); }},
    ListedCommand{"cutRange", "Cut Range", "Clip", "Shift+Del", hasRange, cutRange},
    ListedCommand{"keepRange", "Keep Only Range", "Clip", "", hasRange, keepRange},
    ListedCommand{"speedUp", "Double Speed", "Clip", "", hasSpeed, [](Session& s) { s.setSpeed(s.speed() * 2); }},
    ListedCommand{"slowDown", "Half Speed", "Clip", "", hasSpeed, [](Session& s) { s.setSpeed(s.speed() / 2); }},
    ListedCommand{"changeSpeed", "Change Speed…", "Clip", "Ctrl+R", hasSpeed, want<speedDialog>},
    ListedCommand{"holdFrame", "Hold Frame for a Second", "Clip", "H", hasVideo, [](Session& s) { s.insertTime(1); }},
    ListedCommand{"mute", "Mute or Unmute Clip", "Clip", "M", hasSelectedClip,
                  [](Session& s) { s.setClipsMuted(!isMuted(s)); }},

    ListedCommand{"addZoom", "Add Zoom", "Add", "Z", hasVideo, add<asNumber(ItemKind::zoom)>},
    ListedCommand{"addLoupe", "Add Glass Loupe", "Add", "Shift+Z", hasVideo,
                  [](Session& s) { s.add(QStringLiteral("zoom"), QStringLiteral("loupe")); }},
    ListedCommand{"addTitle", "Add Title", "Add", "T", hasVideo,
                  [](Session& s) { s.add(QStringLiteral("overlay"), QStringLiteral("title")); }},
    ListedCommand{"addCallout", "Add Callout", "Add", "Shift+T", hasVideo,
                  [](Session& s) { s.add(QStringLiteral("overlay"), QStringLiteral("callout")); }},
    ListedCommand{"addArrow", "Add Arrow", "Add", "A", hasVideo,
                  [](Session& s) { s.add(QStringLiteral("overlay"), QStringLiteral("arrow")); }},
    ListedCommand{"addBox", "Add Box", "Add", "B", hasVideo,
                  [](Session& s) { s.add(QStringLiteral("overlay"), QStringLiteral("box")); }},
    ListedCommand{"addCaption", "Add Caption", "Add", "C", hasVideo, add<asNumber(ItemKind::caption)>},
    ListedCommand{"addRedaction", "Hide Area", "Add", "R", hasVideo, add<asNumber(ItemKind::redaction)>},
    ListedCommand{"addScene", "Add Scene Change", "Add", "L", hasVideo, add<asNumber(ItemKind::scene)>},
    ListedCommand{"addCameraMove", "Add Camera Move", "Add", "K",
                  [](Session const& s) { return hasVideo(s) && s.document().usesCamera(); },
                  add<asNumber(ItemKind::cameraMove)>},

    ListedCommand{"polish", "Auto Polish", "Film", "Ctrl+Shift+P",
                  [](Session const& s) { return !s.polish()->isRunning() && !s.document().timeline.clips.empty(); },
                  [](Session& s) { s.polish()->start(); }},
    ListedCommand{"removeSilence", "Remove Silence", "Film", "",
                  [](Session const& s) { return std::ranges::any_of(s.document().silences, &SilenceSpan::isRemoved); },
                  perform<operations::RemoveSilence>},
    ListedCommand{"speedUpTyping", "Speed Up Typing", "Film", "",
                  [](Session const& s) { return !s.document().metadata->keystrokes.empty(); },
                  perform<operations::SpeedUpTyping>},
    ListedCommand{"tightenPauses", "Tighten Pauses", "Film", "", hasTranscript, perform<operations::TightenPauses>},
    ListedCommand{"removeFillers", "Remove Filler Words", "Film", "", hasTranscript,
                  perform<operations::RemoveFillers>},
    ListedCommand{"makeCaptions", "Make Captions from Speech", "Film", "", hasTranscript,
                  perform<operations::CaptionsFromTranscript>},
    ListedCommand{"save", "Save", "Film", "Ctrl+S", [](Session const& s) { return !s.isSaved(); },
                  [](Session& s) { s.save(); }},
    ListedCommand{"rename", "Rename…", "Film", "F2", always, want<renameDialog>},
    ListedCommand{"earlierSave", "Go Back to Earlier Save", "Film", "", always,
                  [](Session& s) { s.goBackToEarlierSave(); }},

    ListedCommand{exportName, "Export…", "Film", "Ctrl+E", hasFilm, want<exportName>},
    ListedCommand{exportAgainName, "Export Again", "Film", "Ctrl+Shift+E", hasFilm, want<exportAgainName>},
    ListedCommand{copyFrameName, "Copy Frame", "Film", "Ctrl+Shift+C", hasFilm, want<copyFrameName>},
    ListedCommand{saveFrameName, "Save Frame…", "Film", "Ctrl+Shift+S", hasFilm, want<saveFrameName>},

    ListedCommand{"stepBack", "Back One Frame", "Go", "Left", always, [](Session& s) { s.step(-1); }},
    ListedCommand{"stepForward", "Forward One Frame", "Go", "Right", always, [](Session& s) { s.step(1); }},
    ListedCommand{"stepBackTen", "Back Ten Frames", "Go", "Shift+Left", always, [](Session& s) { s.step(-10); }},
    ListedCommand{"stepForwardTen", "Forward Ten Frames", "Go", "Shift+Right", always, [](Session& s) { s.step(10); }},
    ListedCommand{"jumpBack", "To the Edge Before", "Go", "Up", always, [](Session& s) { s.jump(false); }},
    ListedCommand{"jumpForward", "To the Next Edge", "Go", "Down", always, [](Session& s) { s.jump(true); }},
    ListedCommand{"toStart", "To the Start", "Go", "Home", always, [](Session& s) { s.setPlayhead(0); }},
    ListedCommand{"toEnd", "To the End", "Go", "End", always, [](Session& s) { s.setPlayhead(s.duration()); }},
    ListedCommand{"toggleSnapping", "Snap While Dragging", "Go", "N", always,
                  [](Session& s) { s.setSnaps(!s.snaps()); }},
    ListedCommand{"shortcuts", "Keyboard Shortcuts…", "Go", "F1", always, want<shortcutsDialog>},
};

}

std::span<ListedCommand const> editorCommands() { return commands; }

}
