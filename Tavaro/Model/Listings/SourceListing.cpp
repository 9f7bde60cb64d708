#include <Tavaro/Model/Listings/SourceListing.h>

#include <TavaroCapture/Sources/SourceList.h>

namespace tavaro {

namespace {

template<class Rect> ListedFrame listed(Rect const& frame) { return {frame.x, frame.y, frame.width, frame.height}; }

}

SourceListing listingOf(SourceList const& sources) {
    SourceListing listing;
    for (auto const& display : sources.displays)
        listing.displays.push_back({display.id, display.name, listed(display.frame), display.isMain});
    for (auto const& window : sources.windows)
        listing.windows.push_back(
            {window.id(), window.application, window.bundleID, window.title, listed(window.frame), window.isMinimized});
    for (auto const& camera : sources.cameras) listing.cameras.push_back({camera.id, camera.name, camera.isDefault});
    for (auto const& microphone : sources.microphones)
        listing.microphones.push_back({microphone.id, microphone.name, microphone.isDefault});
    if (sources.systemSound)
        listing.systemAudio = ListedSystemAudio{sources.systemSound->name, sources.systemSound->applications};
    listing.limits = sources.limits;
    return listing;
}

}
