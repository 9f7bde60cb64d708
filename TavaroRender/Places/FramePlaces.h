#pragma once

#include <array>
#include <optional>
#include <vector>

#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroCore/Zoom/CameraState.h>
#include <TavaroRender/Composition/ZoomUse.h>

namespace tavaro {

/// Where a frame has what can be taken hold of on it. Places are shares of the canvas, from its left and top, and may
/// reach past it; `onCanvas` and `onRecording` lead from them to the whole recording's 0…1 and back.
struct FramePlaces {
    /// An item, where it is drawn.
    struct Item {
        UUID id;
        NormalizedRect rect;

        bool operator==(Item const&) const = default;
    };
    /// The camera's picture: a bubble, or a pane.
    struct Camera {
        NormalizedRect rect;
        bool isPane = false;
        std::array<NormalizedRect, 8> placements; // where a bubble of its size stands, as `CameraPlacement` lists them

        bool operator==(Camera const&) const = default;
    };

    /// Between the panes of a split screen.
    struct Divider {
        NormalizedRect rect;
        UnitPoint2 noCamera, allCamera; // its middle, were the camera's share of the canvas 0 or 1

        bool isUpright() const { return noCamera.x != allCamera.x; }
        /// The camera's share with the divider there.
        double share(UnitPoint2 middle) const;
        bool operator==(Divider const&) const = default;
    };

    double editTime = 0; // output seconds of the edit
    Size2 canvas;        // pixels
    bool showsRecording = false;
    NormalizedRect crop = {0, 0, 1, 1}; // of the recording
    NormalizedRect content;             // the cropped recording before the zoom; may be wider than what is seen of it
    NormalizedRect shown;               // the part of the canvas that shows it
    CameraState zoom;                   // that the frame is drawn through
    std::optional<Camera> camera;
    std::optional<Divider> divider;    // while both panes are where they stay
    std::optional<UnitPoint2> pointer; // also where it is not drawn
    std::vector<Item> overlays;        // in the order drawn: what changes the recording, then what lies over all
    std::vector<Item> redactions;
    std::optional<Item> caption;
    std::vector<ZoomWindow> zooms; // of the cropped recording

    UnitPoint2 onCanvas(UnitPoint2 const& ofRecording) const;
    UnitPoint2 onRecording(UnitPoint2 const& ofCanvas) const;
    NormalizedRect onCanvas(NormalizedRect const& ofRecording) const;
    NormalizedRect onRecording(NormalizedRect const& ofCanvas) const;

    bool operator==(FramePlaces const&) const = default;
};

}
