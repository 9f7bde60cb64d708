#include <TavaroCore/Privacy/Private/LineWindow.h>

namespace tavaro {

namespace {

constexpr std::size_t longestWindow = 1024; // bytes of a line that are looked at together
constexpr std::size_t windowOverlap = 256;
constexpr std::size_t windowLeadIn = 64; // bytes at a window's start that only are what a match looks back on

}

LineWindow::LineWindow(std::string_view line) : line(line) { setEnd(); }

std::optional<LineWindow> LineWindow::next() const {
    if (end == line.size()) return std::nullopt;
    auto window = *this;
    window.start = startOfCharacter(end - windowOverlap);
    window.firstOwn = endOfOwn;
    window.endBefore = end;
    window.setEnd();
    return window;
}

void LineWindow::setEnd() {
    bool const isLast = line.size() - start <= longestWindow;
    end = isLast ? line.size() : startOfCharacter(start + longestWindow);
    endOfOwn = isLast ? end : end - windowOverlap + windowLeadIn;
}

/// Back from a byte within a character; a flood of stray bytes has none.
std::size_t LineWindow::startOfCharacter(std::size_t at) const {
    for (std::size_t back = 0; back < 4; ++back) {
        if ((line[at - back] & 0xC0) != 0x80) return at - back;
    }
    return at;
}

}
