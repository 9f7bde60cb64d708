#pragma once

#include <string>
#include <vector>

namespace tavaro {

/// Keys held for one key press.
struct Chord {
    bool control = false;
    bool option = false;
    bool shift = false;
    bool command = false;
    std::string key;

    /// "⌃", "⌥", "⇧", "⌘" in this order, then the key.
    std::vector<std::string> names() const;
    bool isShortcut() const { return control || option || command; }
    bool operator==(Chord const&) const = default;
};

}
