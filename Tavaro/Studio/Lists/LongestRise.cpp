#include <Tavaro/Studio/Lists/LongestRise.h>

#include <algorithm>

namespace tavaro {

std::vector<bool> longestRise(std::vector<std::size_t> const& numbers) {
    constexpr auto none = static_cast<std::size_t>(-1);
    std::vector<std::size_t> ends; // of the lowest rise of each length, as places
    std::vector<std::size_t> before(numbers.size(), none);
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        auto const length =
            std::ranges::lower_bound(ends, numbers[i], {}, [&](std::size_t place) { return numbers[place]; });
        if (length != ends.begin()) before[i] = *std::prev(length);
        if (length == ends.end())
            ends.push_back(i);
        else
            *length = i;
    }
    std::vector<bool> belongs(numbers.size());
    for (auto i = ends.empty() ? none : ends.back(); i != none; i = before[i]) belongs[i] = true;
    return belongs;
}

}
