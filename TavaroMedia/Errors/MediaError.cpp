#include <TavaroMedia/Errors/MediaError.h>

#include <utility>

namespace tavaro {

MediaError::MediaError(Kind kind, std::string const& sentence, std::string detail)
    : Error(sentence)
    , kind_(kind)
    , detail_(std::move(detail)) {}

MediaError::~MediaError() = default;

}
