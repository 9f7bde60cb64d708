#include <Tavaro/Agents/Private/ProjectView.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroMCP/Protocol/MCPToolError.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <map>
#include <string_view>
#include <utility>

namespace tavaro {

namespace {

struct EventList {
    std::string path; // in the view
    std::size_t total = 0;
};

/// The lists of the log that grow with the take and are cut to their beginning.
std::array<EventList, 3> eventLists(RecordingMetadata const& log) {
    return {EventList{"metadata.appSpans", log.appSpans.size()}, EventList{"metadata.clicks", log.clicks.size()},
            EventList{"metadata.keystrokes", log.keystrokes.size()}};
}

std::size_t sizeOf(JSONValue const& value) { return JSONText(value).text().size(); }

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

/// The members of an object, as texts.
using Members = std::map<std::string_view, std::string>;

template<RecordType R> Members membersOf(R const& record, std::initializer_list<std::string_view> leftOut) {
    Members members;
    forEachField<R>([&](auto const& field) {
        if (std::ranges::find(leftOut, field.name) != leftOut.end()) return;
        auto const& value = record.*field.member;
        if constexpr (detail::IsOptional<std::remove_cvref_t<decltype(value)>>::value) {
            if (!value) return;
        }
        members.emplace(field.name, encodeJSON(value));
    });
    return members;
}

/// The keys are names of fields, which need no escaping.
std::string objectText(Members const& members) {
    std::string text = "{";
    for (auto const& [key, value] : members) text.append("\"").append(key).append("\":").append(value).append(",");
    text.back() = '}';
    return text;
}

std::string shownText(DemoProject const& project, std::size_t events) {
    auto members = membersOf(project, {"cameraFaces", "metadata", "transcript"});
    auto const log = shownLog(*project.metadata, events);
    members.emplace("metadata", objectText(membersOf(log, {"cursorSamples", "rawCursorSamples", "micLevels"})));
    if (project.transcript) members.emplace("transcript", objectText(membersOf(**project.transcript, {"envelope"})));
    members.emplace("duration", encodeJSON(project.duration()));
    return objectText(members);
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

std::vector<ViewList> listsOf(JSONValue& json, RecordingMetadata const& log) {
    std::vector<ViewList> lists;
    collect(json, "", lists);
    for (auto& list : lists) {
        for (auto const& events : eventLists(log)) {
            if (list.path != events.path) continue;
            list.isOfEvents = true;
            list.total = events.total;
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
    for (auto& list : lists) list.bytes = sizeOf(*list.value);
    while (bytes > most) {
        auto* const list = longestOf(lists);
        if (!list) throw MCPToolError(MCPErrorCode::failed, "The project has too much text to be shown.");
        list->entries().resize(list->entries().size() / 2);
        auto const before = std::exchange(list->bytes, sizeOf(*list->value));
        bytes -= before - list->bytes;
    }
}

/// Of a view that has more bytes.
ProjectView shortenedView(JSONValue json, RecordingMetadata const& log, std::size_t mostBytes) {
    ProjectView view;
    auto lists = listsOf(json, log);
    shorten(lists, sizeOf(json), mostBytes);
    for (auto const& list : lists) {
        auto const shown = list.entries().size();
        if (shown < list.total) view.shortened.push_back({list.path, shown, list.total});
    }
    view.json = json;
    return view;
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
    auto const& log = *project.metadata;
    auto text = shownText(project, limits.events);
    if (text.size() > limits.bytes) return shortenedView(JSONValue::parse(text), log, limits.bytes);
    ProjectView view{.json = JSONText::written(std::move(text))};
    for (auto const& events : eventLists(log)) {
        if (events.total > limits.events) view.shortened.push_back({events.path, limits.events, events.total});
    }
    return view;
}

}
