#include "WorkingFolder.h"

#include <cstdint>

// A manifest of any bytes costs a take nothing that is on the disk.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static tavaro::WorkingFolder const take;
    take.expectTake(tavaro::manifestPath(take.folder()), {reinterpret_cast<char const*>(data), size});
    return 0;
}
