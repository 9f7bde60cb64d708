#include <TavaroRender/Export/ExportError.h>

#include <cctype>

#include <TavaroRender/Painter/PaintError.h>

namespace tavaro {

ExportError ExportError::readerFailed(std::string const& detail) {
    return {Kind::readerFailed, "Could not read the recording: " + detail, detail};
}

ExportError ExportError::writerFailed(std::string const& detail) {
    return {Kind::writerFailed, "Could not write the export: " + detail, detail};
}

ExportError ExportError::missingAsset(std::string const& name) {
    return {Kind::missingAsset, "Missing asset '" + name + "' in the project."};
}

ExportError ExportError::noVideoTrack() { return {Kind::noVideoTrack, "The recording has no video track."}; }

ExportError ExportError::audioFailed(std::string const& sentence) { return {Kind::audioFailed, sentence}; }

ExportError ExportError::effectFailed(std::string const& sentence) { return {Kind::effectFailed, sentence}; }

ExportError ExportError::cancelled() { return {Kind::cancelled, "Export cancelled."}; }

ExportError ExportError::gifFailed(std::string const& detail) {
    auto reason = detail;
    if (!reason.empty()) reason[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(reason[0])));
    return {Kind::gifFailed, "Could not encode the GIF. " + reason + ".", detail};
}

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
