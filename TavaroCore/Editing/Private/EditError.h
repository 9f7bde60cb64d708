#pragma once

#include <TavaroCore/Errors/Error.h>

#include <string>

namespace tavaro {

/// An edit that cannot be made on the document as it is.
class EditError : public Error {
public:
    enum class Kind { noSuchClip, noSuchTrack, nothingShown, heldFrame, badNumber };

    EditError(Kind kind, std::string const& sentence) : Error(sentence), kind_(kind) {}

    Kind kind() const { return kind_; }

private:
    Kind kind_;
};

}
