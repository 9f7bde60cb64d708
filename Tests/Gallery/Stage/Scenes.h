#pragma once

#include <functional>
#include <string>
#include <vector>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Compositor/Compositor.h>

namespace tavaro::gallery {

class Stage;

/// One picture of the gallery: a change of the stage's project, and the moment at which it is looked at.
struct Scene {
    std::string family; // "backgrounds", "cursors", …
    std::string name;   // unique; also the name of its stored picture
    std::function<void(DemoProject&)> change;
    double time = 3; // output seconds
    Size2 shape = {16, 9};

    /// The canvas whose longer side has that many pixels.
    Size2 canvas(int longerSide) const;
};

/// Every scene, family by family.
std::vector<Scene> const& scenes();
std::vector<std::string> families();

Image drawn(Scene const& scene, Stage const& stage, Size2 canvas, CompositorBackend backend);

}
