#pragma once

#include <TavaroMedia/Frames/Image.h>

namespace tavaro {

enum class FilmedApp { dashboard, editor, document, terminal };

/// Draws an application as recordings show it; in the dashboard a chart grows over `seconds`.
void drawFilmedApp(Image& image, FilmedApp app, double seconds);

/// As the library shows a film of it: framed, on a background.
void drawStill(Image& image, FilmedApp app);

}
