#pragma once

#include <array>
#include <string_view>

#include <TavaroMedia/Frames/Image.h>

namespace tavaro {

/// What films are measured on, drawn by formulas, the same on every machine.
enum class FilmScene {
    page,      // lines of text on white, typed into, scrolled now and then
    tour,      // that page on a gradient, zoomed to and moved along
    landscape, // hills of noise under a moving camera, with grain
};
inline constexpr std::array filmScenes{FilmScene::page, FilmScene::tour, FilmScene::landscape};

std::string_view nameOf(FilmScene scene);

/// Draws frames of one scene at one size.
class FilmSceneDrawing {
public:
    FilmSceneDrawing(FilmScene scene, int width, int height);

    /// Frame 60·t is that of second t.
    void draw(Image& image, int frame);

private:
    void drawPage(Image& image, int frame) const;
    void drawTour(Image& image, int frame);
    void drawLandscape(Image& image, int frame) const;

    FilmScene scene_;
    int width_;
    int height_;
    Image still_; // the long page, or the land
    Image page_;  // of the tour, at this frame
};

}
