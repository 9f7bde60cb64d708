#include <TavaroMCP/Catalogue/MCPToolCatalog.h>

#include <TavaroCore/Export/ExportSettings.h>
#include <TavaroMCP/Catalogue/Private/Schema.h>

#include <array>

namespace tavaro {

namespace {

using namespace schema;

template<NamedEnum E> JSONValue caseOf(std::string_view description) {
    auto const names = namesOf(E{});
    return oneOf(names, description);
}

template<std::size_t count>
JSONValue caseOf(std::array<std::string_view, count> const& names, std::string_view description) {
    return oneOf(names, description);
}

Property app() {
    return {"app", text("App name as shown in the Dock, e.g. \"Mossfile\", or bundle id, e.g. \"com.mossfile.app\".")};
}

Property projectID() { return {"project_id", text("Project id from list_projects, stop_recording or record_for.")}; }

Property title() {
    return {"title", text("Visible title of the element, e.g. \"Developer\". Exact matches win over partial ones.")};
}

JSONValue seconds(std::string_view description, Bounds const& bounds = {.minimum = 0}) {
    return number(description, bounds);
}

JSONValue area() {
    return object({{"display", text("Display id the area is on.")},
                   {"x", number("Left edge, points from the display's top-left.")},
                   {"y", number("Top edge, points from the display's top-left.")},
                   {"width", number("Width in points.", {.minimum = 32})},
                   {"height", number("Height in points.", {.minimum = 32})}},
                  {"display", "x", "y", "width", "height"});
}

JSONValue target() {
    return object({{"display", text("Display id from list_sources, e.g. \"display-1\".")},
                   {"window", text("Window id from list_sources, e.g. \"window-4512\".")},
                   {"app", text("Bundle identifier of an app to record, e.g. \"com.apple.Safari\".")},
                   {"area", area()}});
}

Properties recordingOptions() {
    constexpr std::array<std::string_view, 6> aspects = {"free", "16:9", "9:16", "1:1", "4:5", "4:3"};
    return {{"target", target()},
            {"aspect", caseOf(aspects, "Shape lock for an area recording. Default free.")},
            {"microphone", flag("Record the microphone. Default: the app's current setting.")},
            {"system_audio", flag("Record system audio. Default: the app's current setting.")},
            {"camera", flag("Record the camera. Default: the app's current setting.")},
            {"countdown", integer("Seconds of countdown before recording. Default 3.", {.minimum = 0, .maximum = 10})}};
}

MCPTool recordForTool() {
    auto options = recordingOptions();
    options.push_back({"seconds", seconds("How long to record, in seconds.", {.minimum = 1, .maximum = 600})});
    return {MCPToolName::recordFor,
            "Record for a fixed number of seconds, then stop, polish and save. Returns the project id.",
            object(options, {"target", "seconds"})};
}

MCPTool editTimelineTool() {
    constexpr std::array<std::string_view, 6> operations = {"trim", "cut", "speed", "split", "mute", "volume"};
    constexpr std::array<std::string_view, 5> tracks = {"microphone", "system", "voiceover", "music", "camera"};
    return {MCPToolName::editTimeline,
            "Timeline edits. op is one of: trim {start,end} keeps only that range; cut {start,end} removes it; speed "
            "{start,end,rate}; split {time}; mute {track,muted}; volume {track,level 0-2}. track is microphone, "
            "system, voiceover, music or camera.",
            object({projectID(),
                    {"op", caseOf(operations, "Which edit.")},
                    {"start", seconds("Range start, seconds.")},
                    {"end", seconds("Range end, seconds.")},
                    {"time", seconds("Split point, seconds.")},
                    {"rate", number("Speed multiplier.", {.minimum = 0.25, .maximum = 16})},
                    {"track", caseOf(tracks, "Audio track.")},
                    {"muted", flag("Mute or unmute.")},
                    {"level", number("Gain, 1 is unchanged.", {.minimum = 0, .maximum = 2})}},
                   {"project_id", "op"})};
}

MCPTool runActionTool() {
    constexpr std::array<std::string_view, 11> actions = {
        "auto_polish",       "transcribe",     "captions_from_transcript", "remove_fillers", "tighten_pauses",
        "delete_words",      "remove_silence", "speed_up_typing",          "hide_secrets",   "draft_voiceover_script",
        "generate_voiceover"};
    return {MCPToolName::runAction,
            "One-click features: auto_polish, transcribe, captions_from_transcript, remove_fillers, tighten_pauses, "
            "delete_words, remove_silence, speed_up_typing, hide_secrets, draft_voiceover_script, generate_voiceover.",
            object({projectID(),
                    {"action", caseOf(actions, "Which feature.")},
                    {"options",
                     freeObject("auto_polish: any of smartZoom, cursorSmoothing, clickHighlights, motionBlur, "
                                "audioEnhancement, removeSilence, background, cameraPositioning, captions, "
                                "keystrokeOverlays, zoomFollowsCursor (booleans). transcribe: locale. "
                                "captions_from_transcript: max_characters. tighten_pauses: max_pause. delete_words: "
                                "from_word, to_word (indices into transcript.words, inclusive). speed_up_typing: rate. "
                                "draft_voiceover_script: product_name, style. generate_voiceover: voice.")}},
                   {"project_id", "action"})};
}

MCPTool exportFilmTool() {
    return {MCPToolName::exportFilm,
            "Export the finished video. Give a preset id, or a custom width/height/fps/codec/container. Never "
            "overwrites an existing file. Returns the path.",
            object({projectID(),
                    {"preset", text("Preset id from list_export_presets.")},
                    {"width", integer("Custom width.", {.minimum = 64, .maximum = 7680})},
                    {"height", integer("Custom height.", {.minimum = 64, .maximum = 7680})},
                    {"fps", integer("Custom frame rate.", {.minimum = 1, .maximum = 120})},
                    {"codec", caseOf<VideoCodecChoice>("Custom codec.")},
                    {"container", caseOf<ExportContainer>("Custom container.")},
                    {"output_path", text("Absolute file path. Default ~/Movies/Tavaro/Exports/<project> — "
                                         "<preset>.<ext>.")}},
                   {"project_id"})};
}

MCPTool uiClickTool() {
    constexpr std::array<std::string_view, 2> buttons = {"left", "right"};
    return {MCPToolName::uiClick,
            "Click in another app with the real pointer, which glides there first so a recording shows the move; "
            "Tavaro records it as a real click (click sounds, click zooms). Name the target by title (with app), "
            "element id (with app), or x/y in screen points. hold keeps the result on screen before the next step. "
            "Moving the mouse yourself stops it.",
            object({app(),
                    title(),
                    {"role", text("Only match this role, e.g. Button, RadioButton, Row.")},
                    {"element", text("Element id from ui_elements.")},
                    {"x", number("Screen x in points (instead of a title or element).")},
                    {"y", number("Screen y in points.")},
                    {"button", caseOf(buttons, "Default left.")},
                    {"count", integer("2 for a double-click. Default 1.", {.minimum = 1, .maximum = 3})},
                    {"glide",
                     seconds("Seconds the pointer takes to get there. Default 0.7.", {.minimum = 0, .maximum = 5})},
                    {"hold", seconds("Seconds to wait after clicking. Default 1.", {.minimum = 0, .maximum = 60})}})};
}

MCPTool uiScrollTool() {
    constexpr int farthest = 20000;
    return {MCPToolName::uiScroll,
            "Scroll smoothly with the real scroll wheel, over an element, a point, or wherever the pointer is.",
            object({app(),
                    title(),
                    {"element", text("Scroll over this element.")},
                    {"x", number("Screen x in points.")},
                    {"y", number("Screen y in points.")},
                    {"down", number("Pixels to scroll down; negative scrolls up.",
                                    {.minimum = -farthest, .maximum = farthest})},
                    {"right", number("Pixels to scroll right; negative scrolls left.",
                                     {.minimum = -farthest, .maximum = farthest})},
                    {"glide",
                     seconds("Seconds to move the pointer there first. Default 0.5.", {.minimum = 0, .maximum = 5})},
                    {"hold", seconds("Seconds to wait afterwards. Default 1.", {.minimum = 0, .maximum = 60})}})};
}

std::vector<MCPTool> makeTools() {
    using enum MCPToolName;
    return {
        {status, "Tavaro's state: version, macOS permissions, recorder state and the open project.", object({})},
        {listSources,
         "Displays, windows, cameras and microphones that can be recorded, with the ids start_recording takes.",
         object({})},
        {startRecording,
         "Start recording a display, window, app or area. Returns once recording has begun (after the countdown). Stop "
         "with stop_recording.",
         object(recordingOptions(), {"target"})},
        {stopRecording,
         "Stop the current recording. Auto Polish runs and the project is saved to the library. Returns the project "
         "id.",
         object({})},
        {pauseRecording, "Pause the current recording.", object({})},
        {resumeRecording, "Resume a paused recording.", object({})},
        {cancelRecording, "Stop and throw away the current recording.", object({})},
        recordForTool(),
        {listProjects, "Recent projects, newest first.",
         object({{"limit", integer("How many. Default 20.", {.minimum = 1, .maximum = 200})}})},
        {openProject, "Open a project in the Tavaro editor.", object({projectID()}, {"project_id"})},
        {getProject,
         "The whole edit as JSON: zooms, overlays, captions, camera, background, cursor, audio, transcript, clicks and "
         "keystrokes, export settings. Times are seconds.",
         object({projectID()}, {"project_id"})},
        {editProject,
         "Change any part of the edit with a JSON merge patch (RFC 7386) over the get_project JSON. Arrays are "
         "replaced whole. id, version, metadata, assetDurations, createdAt and timeline cannot be patched (use "
         "edit_timeline). Undoable in the editor.",
         object({projectID(), {"patch", freeObject("JSON merge patch.")}}, {"project_id", "patch"})},
        editTimelineTool(),
        runActionTool(),
        {renderFrame, "A PNG of the finished video at a moment, with every edit applied, so you can check your work.",
         object({projectID(),
                 {"time", seconds("Seconds into the finished video.")},
                 {"max_width", integer("Longest edge in pixels. Default 1280.", {.minimum = 64, .maximum = 3840})}},
                {"project_id", "time"})},
        {listExportPresets, "Export presets: id, size, fps and format.", object({})},
        exportFilmTool(),
        {uiOpenApp,
         "Open an app (by name, e.g. \"Mossfile\", or bundle id) and bring it to the front, so it can be recorded and "
         "clicked through. Returns its front window's frame in screen points.",
         object({app()}, {"app"})},
        {uiElements,
         "The clickable things in an app's windows — buttons, tabs, rows, menus, fields — each with an id, role, title "
         "and frame in screen points. Pass a title or id to ui_click. Custom-drawn areas (charts, canvases) don't "
         "appear: use ui_screenshot and click by x/y.",
         object({app(),
                 {"query", text("Only elements whose title contains this.")},
                 {"limit", integer("At most this many. Default 150.", {.minimum = 1, .maximum = 1000})}},
                {"app"})},
        uiClickTool(),
        uiScrollTool(),
        {uiKeys,
         "Type text, or press shortcuts like \"cmd+1\", \"cmd+shift+f\", \"return\", \"esc\", \"tab\", \"left\", in "
         "the frontmost app. Keys are recorded as keystroke overlays.",
         object({{"text", text("Text to type, character by character.")},
                 {"keys", texts("Shortcuts pressed in order, e.g. [\"cmd+,\", \"tab\"].")},
                 {"hold", seconds("Seconds to wait afterwards. Default 0.5.", {.minimum = 0, .maximum = 60})}})},
        {uiScreenshot,
         "A PNG of an app's front window (or the main display), to see where things are. The reply gives the frame in "
         "screen points: point = frame origin + pixel × frame size ÷ image size.",
         object({app(), {"max_width", integer("Longest edge in pixels.", {.minimum = 200, .maximum = 3840})}})},
    };
}

}

JSONValue MCPTool::listing() const {
    return JSONValue::Object{{"name", nameOf(name)}, {"description", description}, {"inputSchema", inputSchema}};
}

std::vector<MCPTool> const& toolCatalog::all() {
    static std::vector<MCPTool> const tools = makeTools();
    return tools;
}

MCPTool const* toolCatalog::named(std::string_view name) {
    auto const known = enumNamed<MCPToolName>(name);
    return known ? &all()[static_cast<std::size_t>(*known)] : nullptr;
}

JSONValue toolCatalog::listJSON() {
    JSONValue::Array listings;
    for (auto const& tool : all()) listings.push_back(tool.listing());
    return JSONValue::Object{{"tools", std::move(listings)}};
}

}
