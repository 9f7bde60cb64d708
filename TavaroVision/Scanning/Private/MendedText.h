#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// A text as it was read, in which misread pieces are replaced by what they are likely to be. It knows the way back.
class MendedText {
public:
    explicit MendedText(std::string read);

    std::string const& text() const { return text_; }
    bool isMended() const { return isMended_; }

    /// Puts other bytes in the place of some of the text as it is now.
    void replace(std::size_t at, std::size_t length, std::string_view with);

    /// The byte of what was read that a byte of the text, or its end, comes from.
    std::size_t origin(std::size_t at) const { return origins_[at]; }

private:
    std::string text_;
    std::vector<std::size_t> origins_; // of each byte, and of the end
    bool isMended_ = false;
};

}
