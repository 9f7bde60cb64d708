#pragma once

#include <TavaroCapture/Sources/CaptureSource.h>
#include <TavaroMedia/Frames/Image.h>

#include <string>

namespace tavaro {

/// What a source shows at one moment.
struct StillPicture {
    Image image;     // opaque
    PixelRect frame; // what of the desktop it shows; as large as the image
};

/// Takes a picture without the pointer. A window in the open is read from the screen; one that is covered, or partly
/// off the screen, from pixels of its own, for which its program first paints it anew: up to two seconds. Throws
/// `CaptureError` for a source that cannot be pictured, as for one that cannot be recorded.
StillPicture takeStillPicture(CaptureSource const& source, std::string const& display = {});

}
