#pragma once

#include <TavaroCore/Errors/Error.h>

namespace tavaro {

/// Something cannot be recorded, or a take cannot go on.
class CaptureError : public Error {
public:
    enum class Kind {
        noDisplay,      // no X server answers
        unsupported,    // the server lacks something a recording needs
        noSuchSource,   // no display, window or application is what was named
        badSource,      // the source is malformed, empty, hidden or off-screen
        noSound,        // no sound server answers, or it has no such device
        noCamera,       // no such camera, or it cannot be used now
        refused,        // the user does not want it recorded
        unclear,        // what was captured does not tell what it was captured for
        captureLost,    // the source or the server went away
        writeFailed,    // the take cannot be written: disk full, folder unwritable
        diskFull,       // the take was ended before its disk is full
        notRecording,   // an operation needs a take in progress
        recoveryFailed, // a found take cannot be brought back
    };

    CaptureError(Kind kind, std::string const& sentence) : Error(sentence), kind(kind) {}
    Kind const kind;
};

}
