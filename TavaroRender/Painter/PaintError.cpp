#include <TavaroRender/Painter/PaintError.h>

namespace tavaro {

PaintError PaintError::missingAsset(std::string const& name) {
    return {Kind::missingAsset, "Missing asset '" + name + "' in the project.", name};
}

PaintError PaintError::unreadable(std::string const& detail) {
    return {Kind::unreadable, "Could not read the recording: " + detail, detail};
}

PaintError PaintError::noVideoTrack() {
    return {Kind::noVideoTrack, "The recording has no video track.", "it has no video track"};
}

PaintError PaintError::nothingToShow(std::string const& detail) {
    return {Kind::nothingToShow, "Could not read the recording: " + detail, detail};
}

PaintError PaintError::undrawableSize(std::string const& detail) {
    return {Kind::undrawableSize, "Could not draw the frame: " + detail, detail};
}

PaintError PaintError::noMemory() {
    std::string const detail = "there is not enough memory for frames of this size";
    return {Kind::noMemory, "Could not draw the frame: " + detail, detail};
}

PaintError PaintError::effect(std::string const& sentence) { return {Kind::effect, sentence, sentence}; }

}
