#pragma once

#include <memory>
#include <vector>

#include <TavaroCore/Values/Geometry.h>

namespace tavaro {

struct CameraSettings;
struct FaceSample;

/// Which part of the camera's picture is shown: the crop of the settings, and with face tracking the part of it that
/// keeps the face in the middle, calmly. The path of the face is made when it is first asked for. Any thread.
class FaceTrack {
public:
    /// What is given by reference must stay where it is. `aspect` is the camera picture's.
    FaceTrack(CameraSettings const& settings, std::vector<FaceSample> const& faces, double aspect);
    ~FaceTrack();

    /// `at` is a time of the camera's movie, `boxAspect` the aspect of the place on the canvas.
    NormalizedRect crop(double at, double boxAspect) const;

private:
    struct Path;
    UnitPoint2 face(double at) const;

    CameraSettings const& settings_;
    std::vector<FaceSample> const& faces_;
    double const aspect_;
    NormalizedRect const crop_; // of the settings, inside the picture
    std::unique_ptr<Path> path_;
};

}
