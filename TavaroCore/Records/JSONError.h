#pragma once

#include <TavaroCore/Errors/Error.h>

#include <string>
#include <string_view>

namespace tavaro {

/// Text that is not JSON, or JSON that does not fit the record it is read into. `what()` is the path of the value, a
/// colon, and the problem: "zoomEvents[2].scale: expected a number, found a string".
class JSONError : public Error {
public:
    enum class Kind { malformed, wrongType, unknownName, unknownKey, outOfRange, unrecognisedDate, tooLarge };

    JSONError(Kind kind, std::string problem, std::string path = {});

    Kind kind() const { return kind_; }
    std::string const& problem() const { return problem_; }
    std::string const& path() const { return path_; }

    /// The same failure seen from the enclosing record or array.
    JSONError inside(std::string_view key) const;
    JSONError inside(std::size_t index) const;

private:
    Kind kind_;
    std::string problem_;
    std::string path_;
};

}
