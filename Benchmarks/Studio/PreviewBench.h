#pragma once

namespace tavaro {

/// A take of 1920 × 1080 at 60 frames a second in a window's preview: from a seek and from an edit to the picture,
/// pictures while it plays with sound, draws at rest. Needs a Qt application, and a sound server for what is heard.
void benchPreview();

}
