#pragma once

#include <Tests/Vision/Corpus/DesktopPicture.h>

namespace tavaro {

/// How a page's text is set.
struct PageStyle {
    PageColors colors;
    double textSize = 14; // pixels, on the screen
    int width = 1200;     // of the window
};

/// Pages of programs, filled with blocks of text templates: lines of a terminal that wrap at the window's edge …
std::shared_ptr<ScreenPage> terminalPage(std::vector<std::string> const& block, PageStyle const& style,
                                         SecretPlanting& planting);
/// … code beside numbers of lines, which is cut off there …
std::shared_ptr<ScreenPage> editorPage(std::vector<std::string> const& block, PageStyle const& style,
                                       SecretPlanting& planting);
/// … a heading and paragraphs in a proportional face …
std::shared_ptr<ScreenPage> browserPage(std::vector<std::string> const& block, PageStyle const& style,
                                        SecretPlanting& planting);
/// … and "Label|value" as labels with fields on their right.
std::shared_ptr<ScreenPage> formPage(std::vector<std::string> const& block, PageStyle const& style,
                                     SecretPlanting& planting);

/// Puts a page's lines below those of another.
void append(ScreenPage& page, ScreenPage const& more);

}
