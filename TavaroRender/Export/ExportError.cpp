#include <TavaroRender/Export/ExportError.h>

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

ExportError ExportError::cancelled() { return {Kind::cancelled, "Export cancelled."}; }

ExportError ExportError::gifFailed() { return {Kind::gifFailed, "Could not encode the GIF."}; }

ExportError ExportError::alreadyExporting() { return {Kind::alreadyExporting, "Tavaro is already exporting."}; }

}
