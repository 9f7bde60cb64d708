#pragma once

#include <TavaroRender/Kernels/Private/ContentPlan.h>

namespace tavaro {

// The two ways to draw a tile of a plan. Arguments are those of `drawContentTile`.

/// One sample a pixel, sharpened.
void drawSharpTile(ContentPlan const& plan, ContentScratch& scratch, int tile, int yBegin, int yEnd,
                   FunctionRef<ContentSpan(int y)> spanOf);

/// The weighted sum of the plan's taps.
void drawTapTile(ContentPlan const& plan, ContentScratch& scratch, int tile, int yBegin, int yEnd,
                 FunctionRef<ContentSpan(int y)> spanOf);

}
