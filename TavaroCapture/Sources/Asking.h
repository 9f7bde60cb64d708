#pragma once

#include <functional>

namespace tavaro {

/// What goes along with a question to the user, where the desktop asks what to share.
struct Asking {
    std::function<void()> begins = [] {};                   // called before they are asked
    std::function<bool()> isGivenUp = [] { return false; }; // called all the time until they answer
};

}
