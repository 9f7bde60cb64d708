#pragma once

#include <TavaroCore/Errors/Error.h>

#include <string>

namespace tavaro {

/// Why what a recording shows could not be read.
struct VisionError : Error {
    enum class Kind {
        noReader,  // the program or its language is missing
        broken,    // it breaks down or hangs each time
        cancelled, // by the user
        failed,
    };
    VisionError(Kind kind, std::string const& sentence) : Error(sentence), kind(kind) {}
    Kind kind;
};

}
