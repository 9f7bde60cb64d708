#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace tavaro {

/// A piece of a line that is searched together. Neighbours overlap; each start of a match belongs to one of them, the
/// one that sees enough of the line around it.
struct LineWindow {
    std::string_view line;
    std::size_t start = 0;
    std::size_t end = 0;
    std::size_t firstOwn = 0; // bytes into the line, as all here
    std::size_t endOfOwn = 0;
    std::size_t endBefore = 0; // of the window before

    explicit LineWindow(std::string_view line);

    std::string_view text() const { return line.substr(start, end - start); }
    bool owns(std::size_t inWindow) const { return start + inWindow >= firstOwn && start + inWindow < endOfOwn; }

    std::optional<LineWindow> next() const;

private:
    void setEnd();
    std::size_t startOfCharacter(std::size_t at) const;
};

}
