#pragma once

#include <TavaroCore/Errors/Error.h>

namespace tavaro {

/// An order that the recorder cannot carry out as it is.
class RecordingError : public Error {
public:
    enum class Kind {
        busy,         // a recording is in progress, or not far enough
        notRecording, // there is none
    };

    RecordingError(Kind kind, std::string const& sentence) : Error(sentence), kind(kind) {}
    Kind const kind;
};

}
