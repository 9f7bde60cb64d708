#include <TavaroCore/Package/TypedText.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSONError.h>

#include <cstdlib>

namespace {

/// What is taken out of a text leaves none behind, and no more of a document than what was typed.
void takeOutTyping(std::string_view text) {
    auto const masked = tavaro::withoutTypedText(text);
    if (!masked) return;
    if (tavaro::withoutTypedText(*masked) || tavaro::holdsFormerTypedText(*masked)) std::abort();
    try {
        auto const before = tavaro::decodeProject(text), after = tavaro::decodeProject(*masked);
        if (before.metadata->keystrokes.size() != after.metadata->keystrokes.size()) std::abort();
    } catch (tavaro::JSONError const&) {
    }
}

}

// Any bytes are refused with a sentence, or read as a document that is written and read back equal; so without what was
// typed.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string_view const given(reinterpret_cast<char const*>(data), size);
    try {
        takeOutTyping(given);
    } catch (tavaro::JSONError const&) {
    }
    try {
        auto const text = tavaro::encodeProject(tavaro::decodeProject(given));
        if (tavaro::encodeProject(tavaro::decodeProject(text)) != text) std::abort();
    } catch (tavaro::JSONError const&) {
    }
    return 0;
}
