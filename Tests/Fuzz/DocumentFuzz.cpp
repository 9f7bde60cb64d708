#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSONError.h>

#include <cstdlib>

// Any bytes are refused with a sentence, or read as a document that is written and read back equal.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    try {
        auto const text = tavaro::encodeProject(tavaro::decodeProject({reinterpret_cast<char const*>(data), size}));
        if (tavaro::encodeProject(tavaro::decodeProject(text)) != text) std::abort();
    } catch (tavaro::JSONError const&) {
    }
    return 0;
}
