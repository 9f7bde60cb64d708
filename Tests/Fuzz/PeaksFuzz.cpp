#include <Tavaro/Studio/Timeline/PeakFile.h>

#include <cstdlib>

// Any bytes are stored peaks or none; those that are, are written back to the same bytes, and can be shown.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string_view const bytes(reinterpret_cast<char const*>(data), size);
    auto const peaks = tavaro::decodePeaks(bytes);
    if (!peaks) return 0;
    if (tavaro::encodePeaks(*peaks) != bytes) std::abort();
    if (tavaro::PeakPyramid(peaks->base).peaks(0, 0.01, 16).size() != 16) std::abort();
    return 0;
}
