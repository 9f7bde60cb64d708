#pragma once

#include <TavaroCore/Errors/Error.h>

#include <string>

namespace tavaro {

/// No answer came from the web. `what()` is the bare reason, without a stop.
class WebFailure : public Error {
public:
    enum class Kind { notReached, cancelled };
    WebFailure(Kind kind, std::string const& reason) : Error(reason), kind(kind) {}
    WebFailure(WebFailure const&) = default;
    WebFailure& operator=(WebFailure const&) = delete;
    ~WebFailure() override;

    Kind const kind;
};

}
