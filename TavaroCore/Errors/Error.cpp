#include <TavaroCore/Errors/Error.h>

namespace tavaro {

Error::Error(std::string const& sentence) : std::runtime_error(sentence) {}

Error::~Error() = default; // here, so that the type's table is emitted once

}
