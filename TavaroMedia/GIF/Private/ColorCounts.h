#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tavaro {

/// A colour of a film, or the mean of several that are alike, and how many pixels have it.
struct CountedColor {
    double red = 0, green = 0, blue = 0;
    double count = 0;
};

/// Counts the colours of pictures. Each colour is counted by itself as long as there are not too many; then those that
/// differ in their last bits only are counted together, so that memory is bounded however long a film is.
class ColorCounts {
public:
    ColorCounts();

    void add(std::uint32_t const* argb, std::size_t count);
    std::vector<CountedColor> colors() const;

private:
    struct Sum {
        std::uint32_t key = 0; // of the colours that are counted together; 0: none yet
        std::uint64_t count = 0, red = 0, green = 0, blue = 0;
    };

    void add(std::uint32_t argb, std::uint64_t count);
    void add(Sum const& sum);
    Sum& sumAt(std::uint32_t key);
    void coarsen();

    std::vector<Sum> table_; // a hash table with open addresses
    std::size_t used_ = 0;
    std::uint32_t mask_ = 0xFFFFFF; // the bits of a colour that tell it from others
};

}
