#pragma once

#include <TavaroAutomation/Elements/Private/Accessible.h>

#include <string_view>

namespace tavaro::atspi {

/// What a program is made with. LibreOffice passes for GTK 3; others are Java's, and rare ones.
enum class Toolkit { gtk3, gtk4, qt, chromium, gecko, other };

Toolkit toolkitNamed(std::string_view name);

/// What is only so with some toolkits: faults, and what the interface leaves to them.
struct ToolkitHabits {
    // Places
    Origin origin = Origin::screen;       // the only one of which it tells the truth
    bool countsFromShadow = false;        // places are within the window, without its shadow; in a popup, within that
    bool hasWholeScales = false;          // and room for shadows that looks like a scale
    bool hasPagesInPixels = false;        // what is on a page is not scaled, and a point is not either
    bool misplacesMenuItems = false;      // but not the menu
    bool cutsOffInEveryContainer = false; // what shows is told only by what is around it
    bool scrollsInAnything = false;       // and says of nothing that it scrolls
    bool pointFindsInnermost = false;     // and not the next widget inwards
    bool pointSeesWhatCovers = false;     // as the pointer does
    bool pointGoesByOrder = false;        // of a page, and not by what is drawn over what
    bool answersFromOldPicture = false;   // when it is asked what is at a point, and looks then

    // States
    bool saysShowingOfWindowsOnly = false;
    bool losesScrolledViewports = false; // says that they do not show, and gives them no place
    bool losesPartsOfRows = false;       // says that what is in a row that shows does not
    bool hidesScrolledRows = false;      // says that they are invisible
    bool saysWhatIsScrolledAway = false; // by the state: what is laid out there does not show
    bool opensMenusInWindows = false;    // and has no place for what is in a closed one
    bool closesToNoSize = false;         // what is closed has none
    bool makesCellsAnew = false;         // when it is asked for one by a point or a place
    bool makesRowsAnew = false;          // whenever it is asked for any

    // What holds what
    bool wrapsMenuButtons = false; // in a button that takes no clicks
    bool showsPages = false;       // whose labels hold the fields that they name

    // Names
    bool saysNamesInMarkup = false;
    bool namesByClass = false; // what has no name; and says labels twice
};

ToolkitHabits const& habitsOf(Toolkit toolkit);

}
