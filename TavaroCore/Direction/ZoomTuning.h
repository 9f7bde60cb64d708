#pragma once

#include <TavaroCore/Project/DemoMode.h>

namespace tavaro {

/// How automatic zooms behave in a mode. Times in seconds, distances in unit coordinates of the frame.
struct ZoomTuning {
    double maximumScale;
    double minimumScale;
    double holdSeconds;         // after the last click of a cluster
    double mergeSeconds;        // clicks this close in time …
    double mergeDistance;       // … and in place belong together
    double importanceThreshold; // less important clusters make no zoom
    double minimumGap;          // seconds between two zooms
};

ZoomTuning const& zoomTuning(DemoMode mode);

}
