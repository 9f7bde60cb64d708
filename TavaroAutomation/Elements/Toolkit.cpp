#include <TavaroAutomation/Elements/Private/Toolkit.h>

namespace tavaro::atspi {

namespace {

constexpr ToolkitHabits ofGTK3{.hasWholeScales = true,
                               .losesScrolledViewports = true,
                               .losesPartsOfRows = true,
                               .saysWhatIsScrolledAway = true,
                               .opensMenusInWindows = true,
                               .makesCellsAnew = true};

// It complains on the terminal of whoever asks it for places on the screen.
constexpr ToolkitHabits ofGTK4{.origin = Origin::window,
                               .countsFromShadow = true,
                               .hasWholeScales = true,
                               .cutsOffInEveryContainer = true,
                               .pointFindsInnermost = true,
                               .pointSeesWhatCovers = true,
                               .saysShowingOfWindowsOnly = true,
                               .closesToNoSize = true,
                               .wrapsMenuButtons = true,
                               .namesByClass = true};

constexpr ToolkitHabits ofQt{.cutsOffInEveryContainer = true,
                             .scrollsInAnything = true,
                             .pointFindsInnermost = true,
                             .hidesScrolledRows = true,
                             .opensMenusInWindows = true,
                             .makesRowsAnew = true,
                             .saysNamesInMarkup = true};

constexpr ToolkitHabits ofChromium{.hasPagesInPixels = true,
                                   .pointFindsInnermost = true,
                                   .pointSeesWhatCovers = true,
                                   .pointGoesByOrder = true,
                                   .answersFromOldPicture = true,
                                   .saysWhatIsScrolledAway = true,
                                   .showsPages = true};

constexpr ToolkitHabits ofGecko{.pointSeesWhatCovers = true, .saysWhatIsScrolledAway = true, .showsPages = true};

constexpr ToolkitHabits ofOthers{.misplacesMenuItems = true, .makesCellsAnew = true, .makesRowsAnew = true};

}

Toolkit toolkitNamed(std::string_view name) {
    if (name == "gtk") return Toolkit::gtk3;
    if (name == "GTK") return Toolkit::gtk4;
    if (name == "Qt") return Toolkit::qt;
    if (name == "Chromium") return Toolkit::chromium;
    return name == "Gecko" ? Toolkit::gecko : Toolkit::other;
}

ToolkitHabits const& habitsOf(Toolkit toolkit) {
    switch (toolkit) {
    case Toolkit::gtk3: return ofGTK3;
    case Toolkit::gtk4: return ofGTK4;
    case Toolkit::qt: return ofQt;
    case Toolkit::chromium: return ofChromium;
    case Toolkit::gecko: return ofGecko;
    case Toolkit::other: break;
    }
    return ofOthers;
}

}
