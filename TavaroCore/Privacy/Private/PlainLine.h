#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// A line as it is typed on a keyboard: typographic dashes, quotes, blanks and full-width letters are those of ASCII,
/// what has no width is left out. Other characters stay. It knows the way back to the line's bytes.
class PlainLine {
public:
    /// The line must outlive it.
    explicit PlainLine(std::string_view line);

    std::string_view text() const { return origin_.empty() ? line_ : std::string_view(text_); }

    /// The byte of the line that a byte of the text, or its end, comes from.
    std::size_t origin(std::size_t at) const { return origin_.empty() ? at : origin_[at]; }

private:
    void add(int character, std::string_view bytes, std::size_t at);

    std::string_view line_;
    std::string text_;
    std::vector<std::size_t> origin_; // none when the text is the line
};

}
