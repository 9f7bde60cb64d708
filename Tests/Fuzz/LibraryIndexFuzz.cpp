#include <TavaroCore/Library/Private/LibraryIndex.h>
#include <TavaroCore/Records/JSON.h>

#include <cstdlib>

// Any bytes are an index, if only an empty one, that is written and read back equal.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    using tavaro::LibraryIndex;
    auto const index = LibraryIndex::decode({reinterpret_cast<char const*>(data), size});
    if (!(LibraryIndex::decode(tavaro::encodeJSON(index)) == index)) std::abort();
    return 0;
}
