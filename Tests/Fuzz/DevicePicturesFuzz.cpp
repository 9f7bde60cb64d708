#include <TavaroMedia/Frames/DevicePictures.h>

#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

using namespace tavaro;

// What a camera hands over, in a form that the first bytes choose: a whole picture of that form, all of whose pixels
// can be read, or none.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    if (size < 4) return 0;
    DeviceFormat const format{.layout = static_cast<DeviceLayout>(data[0] % 7), .width = data[1], .height = data[2]};
    std::vector<std::uint8_t> const bytes(data + 4, data + size); // alone, so that nothing beside it can be read
    DevicePictures pictures(format);
    DevicePixels all;
    for (int again = 0; again < 2; ++again) {
        auto const picture = pictures.read(bytes, data[3]);
        if (!picture) continue;
        auto const pixels = all.of(*picture).view;
        if (pixels.width != format.width || pixels.height != format.height) std::abort();
        unsigned sum = 0;
        for (int y = 0; y < format.height; ++y)
            for (int x = 0; x < 4 * format.width; ++x) sum += pixels.row(y)[x];
        if (sum == 1) std::abort(); // so that the sum is needed
    }
    return 0;
}
