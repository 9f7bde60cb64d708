#include <TavaroCore/Looks/CubeLUT.h>

#include <cstdint>
#include <cstdlib>

// A .cube file from anywhere: refused with a sentence, or a whole table whose every corner can be looked up.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    using tavaro::CubeLUT;
    try {
        auto const table = CubeLUT::parse({reinterpret_cast<char const*>(data), size});
        auto const n = static_cast<std::size_t>(table.size);
        if (table.size < 2 || table.size > CubeLUT::largestSize || table.values.size() != 3 * n * n * n) std::abort();
        if (table.apply({1, 1, 1}) !=
            CubeLUT::Color{*(table.values.end() - 3), *(table.values.end() - 2), *(table.values.end() - 1)})
            std::abort();
        table.apply({-1, 0.5f, 2});
    } catch (CubeLUT::ParseError const& error) {
        if (std::string_view(error.what()).size() > 300) std::abort();
    }
    return 0;
}
