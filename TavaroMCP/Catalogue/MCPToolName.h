#pragma once

#include <TavaroCore/Records/Fields.h>

#include <array>
#include <string_view>

namespace tavaro {

enum class MCPToolName {
    status,
    listSources,
    startRecording,
    stopRecording,
    pauseRecording,
    resumeRecording,
    cancelRecording,
    recordFor,
    listProjects,
    openProject,
    getProject,
    editProject,
    editTimeline,
    runAction,
    renderFrame,
    listExportPresets,
    exportFilm,
    uiOpenApp,
    uiElements,
    uiClick,
    uiScroll,
    uiKeys,
    uiScreenshot,
};

constexpr std::array<std::string_view, 23> namesOf(MCPToolName) {
    return {"status",          "list_sources",     "start_recording",  "stop_recording",
            "pause_recording", "resume_recording", "cancel_recording", "record_for",
            "list_projects",   "open_project",     "get_project",      "edit_project",
            "edit_timeline",   "run_action",       "render_frame",     "list_export_presets",
            "export",          "ui_open_app",      "ui_elements",      "ui_click",
            "ui_scroll",       "ui_keys",          "ui_screenshot"};
}

}
