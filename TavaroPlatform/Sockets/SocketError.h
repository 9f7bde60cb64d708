#pragma once

#include <TavaroCore/Errors/Error.h>

#include <string>

namespace tavaro {

class SocketError : public Error {
public:
    enum class Kind {
        pathTooLong,
        isInUse, // another program listens there
        refused, // by the operating system, or by whose the other end is
    };
    SocketError(Kind kind, std::string const& sentence) : Error(sentence), kind(kind) {}

    Kind const kind;
};

}
