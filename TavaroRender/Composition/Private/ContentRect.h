#pragma once

#include <TavaroCore/Export/ExportSettings.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroRender/Composition/Private/CanvasGeometry.h>

namespace tavaro {

struct ScreenStyle;

/// Where the recording lies on the canvas. `inset` is the free canvas on each side, a share of the canvas. `focus`
/// counts only for `fill`, on an axis where the recording is larger than the room left for it: 0 keeps its left or top
/// edge there, 1 its right or bottom one. Empty when the source or the room left for it is.
CanvasRect contentRect(Size2 source, Size2 canvas, ContentFit fit, UnitPoint2 focus, double inset);

/// Where the recording lies when it covers all of a pane, as `fill` covers a canvas.
CanvasRect coveringRect(Size2 source, CanvasRect const& pane, UnitPoint2 focus);

/// The recording and what is drawn around it, of a canvas without camera pane.
struct SinglePane {
    CanvasRect content; // the recording; may reach past the opening on an axis that it overflows
    CanvasRect clip;    // what the screen layer paints: the opening and its device frame or band
    CanvasInsets frame; // clip past the opening

    /// What frame or band leave of the clip.
    CanvasRect opening() const;
    bool operator==(SinglePane const&) const = default;
};

/// `source` is the cropped size. A device frame shrinks the recording so that both together fit the padded canvas,
/// centred; an inset band is laid over the recording's place, and the recording shrinks into it. What is to be filled
/// is the padded canvas: frame or band take their part of it, and the recording covers the opening.
SinglePane singlePane(Size2 source, Size2 canvas, ScreenStyle const& style, ContentFit fit, UnitPoint2 focus);

/// Whether the style has a band around the recording: wide enough to see, and no device frame in its place.
bool hasInsetBand(ScreenStyle const& style);

}
