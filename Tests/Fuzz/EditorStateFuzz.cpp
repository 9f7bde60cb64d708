#include <TavaroCore/Package/EditorState.h>

#include <cstdint>
#include <cstdlib>

// Any bytes are an editor's state with times that make sense, written and read back equal.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const state = tavaro::decodeEditorState({reinterpret_cast<char const*>(data), size});
    if (!(state.playhead >= 0 && state.timelineStart >= 0 && state.timelineScale >= 0)) std::abort();
    if (!(tavaro::decodeEditorState(tavaro::encodeEditorState(state)) == state)) std::abort();
    return 0;
}
