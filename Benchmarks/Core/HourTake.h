#pragma once

#include <TavaroCore/Project/DemoProject.h>

namespace tavaro {

/// A full hour as somebody would have it before the last cuts: 216,000 pointer samples as recorded and as smoothed,
/// 2,000 clicks, typing, speech with its captions, and the zooms, overlays, silences and clips of an edit.
DemoProject hourTake();

}
