#include <TavaroCore/Package/EditorState.h>

#include <TavaroCore/Records/JSON.h>

#include <cmath>

namespace tavaro {

std::string encodeEditorState(EditorState const& state) { return encodeJSON(state); }

EditorState decodeEditorState(std::string_view json) {
    try {
        auto state = decodeJSON<EditorState>(json);
        for (double* const value : {&state.playhead, &state.timelineStart, &state.timelineScale}) {
            if (!std::isfinite(*value) || *value < 0) *value = 0;
        }
        return state;
    } catch (JSONError const&) {
        return {};
    }
}

}
