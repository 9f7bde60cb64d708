#pragma once

namespace tavaro {

struct DemoProject;
struct RecordingMetadata;

/// Lays the automatic layout cues and camera moves of an edit, in the document's `cameraDirectorStyle`: the face is
/// large while somebody explains and nothing happens, small and out of the way while the pointer works.
///
///     beats      intro      doing        explaining    doing   result     outro
///     scene      camera     overlay      split         overlay            camera      (dynamic)
///     bubble                ↘ corner                   ↖ corner
///
/// No scene and no place of the bubble lasts less than the style's shortest shot, and no work is hidden behind the
/// camera to keep to that. Automatic cues and moves made before are replaced; those made by hand stay, and for the
/// length of a shot on either side of one nothing automatic happens. Each cue says its reason. Does nothing when the
/// style is off or there is no camera. A pure function of the document, given its log in output times.
void directCamera(DemoProject& project, RecordingMetadata const& shownLog);

/// Removes the layout cues and camera moves that were laid automatically.
void clearCameraDirection(DemoProject& project);

}
