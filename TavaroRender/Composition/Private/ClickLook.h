#pragma once

#include <TavaroCore/Style/CursorSettings.h>

namespace tavaro {

/// How a click effect looks at one moment: radius as a multiple of the pointer's size, and strength.
struct ClickLook {
    double radius = 0;
    double opacity = 0; // 0…1
};

/// `progress` runs 0…1 through the effect. Every effect begins quickly, slows down and is gone at 1.
ClickLook clickLook(ClickEffect effect, double progress);

}
