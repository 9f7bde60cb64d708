#pragma once

#include <TavaroCore/Errors/Error.h>

#include <string>

namespace tavaro {

/// An operation that is not made; the document stays as it was.
class OperationError : public Error {
public:
    enum class Kind {
        noSuchOperation,
        badArgument, // a parameter is missing, of another type or outside its range
        badPatch,    // a field that there is not, that cannot be changed, or a value that does not fit
        notPossible, // with this document
    };
    OperationError(Kind kind, std::string const& sentence) : Error(sentence), kind(kind), withoutTools(sentence) {}
    /// `tools` is a sentence more for agents, which names tools of theirs.
    OperationError(Kind kind, std::string const& sentence, std::string const& tools)
        : Error(sentence + " " + tools)
        , kind(kind)
        , withoutTools(sentence) {}

    Kind const kind;
    std::string const withoutTools; // the sentence for people
};

}
