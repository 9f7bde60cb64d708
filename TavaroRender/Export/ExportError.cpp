#include <TavaroRender/Export/ExportError.h>

#include <TavaroRender/Painter/PaintError.h>

namespace tavaro {

ExportError ExportError::readerFailed(std::string const& detail) {
    return {Kind::readerFailed, "Could not read the recording: " + detail};
}

ExportError ExportError::writerFailed(std::string const& detail) {
    return {Kind::writerFailed, "Could not write the export: " + detail};
}

ExportError ExportError::missingAsset(std::string const& name) {
    return {Kind::missingAsset, "Missing asset '" + name + "' in the project."};
}

ExportError ExportError::noVideoTrack() { return {Kind::noVideoTrack, "The recording has no video track."}; }

ExportError ExportError::audioFailed(std::string const& sentence) { return {Kind::audioFailed, sentence}; }

ExportError ExportError::effectFailed(std::string const& sentence) { return {Kind::effectFailed, sentence}; }

ExportError ExportError::cancelled() { return {Kind::cancelled, "Export cancelled."}; }

ExportError ExportError::gifFailed() { return {Kind::gifFailed, "Could not encode the GIF."}; }

ExportError ExportError::alreadyExporting() { return {Kind::alreadyExporting, "Tavaro is already exporting."}; }

ExportError ExportError::of(PaintError const& error) {
    switch (error.kind()) {
    case PaintError::Kind::missingAsset: return missingAsset(error.detail());
    case PaintError::Kind::noVideoTrack: return noVideoTrack();
    case PaintError::Kind::undrawableSize:
    case PaintError::Kind::noMemory: return writerFailed(error.detail());
    case PaintError::Kind::effect: return effectFailed(error.detail());
    case PaintError::Kind::unreadable:
    case PaintError::Kind::nothingToShow: break;
    }
    return readerFailed(error.detail());
}

}
