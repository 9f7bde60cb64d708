#pragma once

#include <Tests/Vision/Corpus/ScreenPages.h>

#include <filesystem>
#include <functional>

namespace tavaro {

/// Some seconds of a screen on which private things are seen, and what they are.
struct ScreenScene {
    std::string happens; // "scrolling", "typing" …
    std::string look;    // "dark 14 px"
    int width = 1920;
    int height = 1080;
    int fps = 30;
    double seconds = 6;
    std::vector<PlantedSecret> secrets;
    std::function<DesktopPicture(double seconds)> at;

    int frames() const { return static_cast<int>(seconds * fps); }
    DesktopPicture frame(int number) const { return at(double(number) / fps); }
};

struct SceneLook {
    std::string name;
    PageColors colors;
    double textSize = 14;
    double scale = 1; // of a dense display: its text is so much larger
    int width = 1920;
    int height = 1080;
    int fps = 30;
    double seconds = 6;
    std::uint32_t seed = 1;
};

ScreenScene restingScene(SceneLook const& look);   // windows beside each other; others take their place
ScreenScene printingScene(SceneLook const& look);  // a terminal's lines come one by one and push up those above
ScreenScene scrollingScene(SceneLook const& look); // a long page, scrolled evenly, with rests
ScreenScene typingScene(SceneLook const& look);    // letter by letter, and pasted
ScreenScene movingScene(SceneLook const& look);    // a window is dragged over another, and away
ScreenScene switchingScene(SceneLook const& look); // from window to window and back
ScreenScene playingScene(SceneLook const& look);   // a movie plays in a window beside a terminal
ScreenScene harmlessScene(SceneLook const& look);  // a page with nothing private that looks as if

/// A few scenes of four to six seconds with several dangers each, and some forty for measuring, of half a minute where
/// that shows more.
std::vector<ScreenScene> quickScenes();
std::vector<ScreenScene> allScenes();
/// Of all scenes those that happen so; "" are all, "quick" the few.
std::vector<ScreenScene> scenesOf(std::string_view kind);

/// What private texts of the scenes are looked for: all usual kinds, and the user's own words.
RedactionSettings sceneSettings();

/// Films a scene as a take is.
void writeMovie(ScreenScene const& scene, std::filesystem::path const& file);

}
