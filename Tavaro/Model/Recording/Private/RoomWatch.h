#pragma once

#include <TavaroCore/Records/FunctionRef.h>

#include <limits>
#include <optional>
#include <string>

namespace tavaro {

/// Tells whoever records when the disk has room for some more minutes only. One thread.
class RoomWatch {
public:
    void look(std::optional<double> roomSeconds, FunctionRef<void(std::string const&)> tell);

private:
    double told_ = std::numeric_limits<double>::infinity(); // seconds
};

}
