#pragma once

#include <Tests/Vision/Corpus/PlantedSecrets.h>
#include <Tests/Vision/Drawing/DrawnScreen.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

/// A line of a page; its place is in the page's pixels.
struct PageLine {
    int x = 0;
    int y = 0; // its top
    SecretLine line;
    TextFace face;
    Ink ink;
    std::optional<PixelBox> field; // a box around it, as of a form
    bool operator==(PageLine const&) const = default;
};

struct PageColors {
    Ink paper, text, dim, accent, string, bar, barText, border;
    bool operator==(PageColors const&) const = default;
};
extern PageColors const darkColors, lightColors, blackColors, sandColors;

struct ScreenPage {
    PageColors colors;
    std::vector<PageLine> lines;
    int height = 0;
    bool isCode = false; // quoted parts and comments have inks of their own
};

/// A window: a bar with a title, and below it a page, scrolled.
struct ScreenWindow {
    PixelBox frame;
    std::string title;
    int barHeight = 28;
    std::shared_ptr<ScreenPage const> page;
    int scrolled = 0;            // pixels of the page above the top
    std::vector<PageLine> typed; // beyond those of the page
    std::optional<int> playing;  // a movie's frame in place of the page
    bool operator==(ScreenWindow const&) const = default;

    PixelBox view() const { return {frame.x, frame.y + barHeight, frame.width, frame.height - barHeight}; }
};

/// All that a screen shows at a time.
struct DesktopPicture {
    int width = 1920;
    int height = 1080;
    Ink background{40, 62, 80};
    double scale = 1;                  // of a dense display
    std::vector<ScreenWindow> windows; // the lowest first
    std::optional<std::pair<int, int>> pointer;
    bool operator==(DesktopPicture const&) const = default;
};

void draw(DesktopPicture const& desktop, DrawnScreen& screen);

/// A letter of a secret, where the screen shows some of it.
struct ShownLetter {
    std::size_t secret = 0;
    std::size_t line = 0;  // letters of one line are beside each other
    std::size_t place = 0; // the letter's in the line
    PixelBox box;          // all of it, on the screen
    double seen = 1;       // the share of the box that is neither outside of its window nor behind another
};

/// From the lowest window up, line by line.
std::vector<ShownLetter> shownLetters(DesktopPicture const& desktop, DrawnScreen& screen);

PixelBox overlapOf(PixelBox const& a, PixelBox const& b);
double areaOf(PixelBox const& box);

}
