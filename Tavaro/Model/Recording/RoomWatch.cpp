#include <Tavaro/Model/Recording/Private/RoomWatch.h>

#include <fmt/format.h>

#include <array>

namespace tavaro {

void RoomWatch::look(std::optional<double> roomSeconds, FunctionRef<void(std::string const&)> tell) {
    static constexpr std::array<double, 3> worthTelling{600, 120, 30}; // seconds
    for (double const limit : worthTelling) {
        if (!roomSeconds || *roomSeconds > limit || told_ <= limit) continue;
        told_ = limit;
        bool const isInMinutes = limit > 60;
        double const left = isInMinutes ? limit / 60 : limit;
        tell(
            fmt::format("The disk has room for less than {:.0f} {} of this recording; the take ends before it is full.",
                        left, isInMinutes ? "minutes" : "seconds"));
    }
}

}
