#include <Tavaro/Agents/Private/ProjectView.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMCP/Protocol/MCPToolError.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace tavaro {

namespace {

/// Lists of metadata that grow with the take and are cut to their beginning.
constexpr std::array<std::string_view, 3> eventLists{"clicks", "keystrokes", "appSpans"};

std::size_t sizeOf(JSONValue const& value) {
    JSONWriter writer;
    writeJSON(writer, value);
    return writer.take().size();
}

template<class Event> std::vector<Event> firstOf(std::vector<Event> const& events, std::size_t most) {
    return {events.begin(), events.begin() + static_cast<std::ptrdiff_t>(std::min(events.size(), most))};
}

/// The log without the long lists, which an hour has half a million entries of.
RecordingMetadata shownLog(RecordingMetadata const& log, std::size_t events) {
    return {.captureSize = log.captureSize,
            .scaleFactor = log.scaleFactor,
            .clicks = firstOf(log.clicks, events),
            .keystrokes = firstOf(log.keystrokes, events),
            .appSpans = firstOf(log.appSpans, events),
            .health = log.health};
}

DemoProject shownPart(DemoProject const& project, std::size_t events) {
    auto shown = project;
    shown.metadata = CopyOnWrite(shownLog(*project.metadata, events));
    shown.cameraFaces = {};
    if (shown.transcript) shown.transcript->edit().envelope = {};
    return shown;
}

void erase(JSONValue::Object& json, std::string_view part, std::string_view key) {
    auto const found = json.find(part);
    auto* const members = found == json.end() ? nullptr : std::get_if<JSONValue::Object>(&found->second.content);
    auto const member = members ? members->find(key) : JSONValue::Object::iterator{};
    if (members && member != members->end()) members->erase(member);
}

JSONValue::Object shownJSON(DemoProject const& project, std::size_t events) {
    auto tree = JSONValue::parse(encodeProject(shownPart(project, events)));
    auto& json = std::get<JSONValue::Object>(tree.content);
    json.erase("cameraFaces");
    for (auto const* const key : {"cursorSamples", "rawCursorSamples", "micLevels"}) erase(json, "metadata", key);
    erase(json, "transcript", "envelope");
    json.insert_or_assign("duration", project.duration());
    return std::move(json);
}

/// A list of the view that can be shortened.
struct ViewList {
    std::string path;
    JSONValue* value = nullptr; // an array, in the view
    std::size_t total = 0;      // entries in the document
    bool isOfEvents = false;
    std::size_t bytes = 0;

    JSONValue::Array& entries() const { return std::get<JSONValue::Array>(value->content); }
};

void collect(JSONValue& value, std::string const& path, std::vector<ViewList>& lists) {
    if (auto* const members = std::get_if<JSONValue::Object>(&value.content)) {
        for (auto& [key, member] : *members) collect(member, path.empty() ? key : path + "." + key, lists);
    } else if (auto* const entries = std::get_if<JSONValue::Array>(&value.content)) {
        lists.push_back({.path = path, .value = &value, .total = entries->size()});
    }
}

std::vector<ViewList> listsOf(JSONValue::Object& json, RecordingMetadata const& log) {
    std::vector<ViewList> lists;
    for (auto& [key, member] : json) collect(member, key, lists);
    std::array<std::size_t, 3> const totals{log.clicks.size(), log.keystrokes.size(), log.appSpans.size()};
    for (auto& list : lists) {
        for (std::size_t i = 0; i < eventLists.size(); ++i) {
            if (list.path != fmt::format("metadata.{}", eventLists[i])) continue;
            list.isOfEvents = true;
            list.total = totals[i];
        }
    }
    return lists;
}

/// The next one to shorten; none when all are empty.
ViewList* longestOf(std::vector<ViewList>& lists) {
    ViewList* longest = nullptr;
    for (auto& list : lists) {
        if (list.entries().empty()) continue;
        auto const rank = [](ViewList const& each) { return std::pair(each.isOfEvents, each.bytes); };
        if (!longest || rank(*longest) < rank(list)) longest = &list;
    }
    return longest;
}

void shorten(std::vector<ViewList>& lists, std::size_t bytes, std::size_t most) {
    if (bytes <= most) return;
    for (auto& list : lists) list.bytes = sizeOf(*list.value);
    while (bytes > most) {
        auto* const list = longestOf(lists);
        if (!list) throw MCPToolError(MCPErrorCode::failed, "The project has too much text to be shown.");
        list->entries().resize(list->entries().size() / 2);
        auto const before = std::exchange(list->bytes, sizeOf(*list->value));
        bytes -= before - list->bytes;
    }
}

}

std::string ProjectView::leftOut() const {
    std::string text;
    for (auto const& list : shortened)
        text += fmt::format(" {}: the first {} of {}; {} are left out.", list.path, list.shown, list.total,
                            list.total - list.shown);
    bool const losesContent =
        std::ranges::any_of(shortened, [](Shortened const& list) { return !list.path.starts_with("metadata."); });
    if (losesContent) text += " A patch replaces a list whole: do not patch one that is not whole here.";
    return text;
}

ProjectView viewOf(DemoProject const& project, ViewLimits const& limits) {
    ProjectView view{.json = shownJSON(project, limits.events)};
    auto lists = listsOf(view.json, *project.metadata);
    shorten(lists, sizeOf(view.json), limits.bytes);
    for (auto const& list : lists) {
        auto const shown = list.entries().size();
        if (shown < list.total) view.shortened.push_back({list.path, shown, list.total});
    }
    return view;
}

}
