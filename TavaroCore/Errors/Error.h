#pragma once

#include <stdexcept>
#include <string>

namespace tavaro {

/// Base of every failure of the system. `what()` is one complete sentence for the person at the screen: what was
/// tried, on what, and why it did not work. Derived types add a `kind` to branch on.
class Error : public std::runtime_error {
public:
    explicit Error(std::string const& sentence);
    Error(Error const&) = default;
    Error& operator=(Error const&) = default;
    ~Error() override;
};

}
