#pragma once

#include <string>

#include <TavaroCore/Errors/Error.h>

namespace tavaro {

/// Why a text or a graphic could not be drawn.
class LayerError : public Error {
public:
    enum class Kind { noFonts, noMemory };

    LayerError(Kind kind, std::string const& sentence) : Error(sentence), kind_(kind) {}
    Kind kind() const { return kind_; }

private:
    Kind kind_;
};

}
