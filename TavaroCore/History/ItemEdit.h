#pragma once

#include <TavaroCore/Project/DemoProject.h>

#include <cstddef>
#include <string_view>
#include <variant>
#include <vector>

namespace tavaro {

/// An item of the document and what it becomes: an edit that changes nothing but the inside of some items costs by
/// those, not by the length of the film.
struct ItemEdit {
    using Item = std::variant<ZoomEvent, Overlay, CaptionCue, SilenceSpan>;

    std::size_t index = 0; // in the document's list of such items
    Item item;             // with the identity of the one that is there

    UUID id() const {
        return std::visit([](auto const& each) { return each.id; }, item);
    }
    bool operator==(ItemEdit const&) const = default;
};

/// Where an item is that was edited so.
struct ItemPlace {
    std::string_view field; // of the document
    std::size_t index = 0;  // in its list
    UUID id;

    bool operator==(ItemPlace const&) const = default;
};

// The lists of items that can be edited so, and the field of the document that each is in.

inline std::vector<ZoomEvent>& listOf(DemoProject& project, ZoomEvent const&) { return project.zoomEvents; }
inline std::vector<Overlay>& listOf(DemoProject& project, Overlay const&) { return project.overlays; }
inline std::vector<CaptionCue>& listOf(DemoProject& project, CaptionCue const&) { return project.captions.cues; }
inline std::vector<SilenceSpan>& listOf(DemoProject& project, SilenceSpan const&) { return project.silences; }
template<class Item> std::vector<Item> const& listOf(DemoProject const& project, Item const& item) {
    return listOf(const_cast<DemoProject&>(project), item);
}

constexpr std::string_view listFieldOf(ZoomEvent const&) { return "zoomEvents"; }
constexpr std::string_view listFieldOf(Overlay const&) { return "overlays"; }
constexpr std::string_view listFieldOf(CaptionCue const&) { return "captions"; }
constexpr std::string_view listFieldOf(SilenceSpan const&) { return "silences"; }

/// Calls `visit` with each of these lists.
template<class Project, class Visit> void forEachEditedList(Project& project, Visit&& visit) {
    visit(listOf(project, ZoomEvent{}));
    visit(listOf(project, Overlay{}));
    visit(listOf(project, CaptionCue{}));
    visit(listOf(project, SilenceSpan{}));
}

inline ItemPlace itemPlace(ItemEdit const& edit) {
    return std::visit([&](auto const& item) { return ItemPlace{listFieldOf(item), edit.index, item.id}; }, edit.item);
}

/// The item that is there.
inline ItemEdit itemAt(DemoProject const& project, ItemPlace const& place) {
    ItemEdit found{place.index, {}};
    forEachEditedList(project, [&](auto const& items) {
        using Item = typename std::remove_cvref_t<decltype(items)>::value_type;
        if (listFieldOf(Item{}) == place.field) found.item = items.at(place.index);
    });
    return found;
}

/// The same item as the document has it.
inline ItemEdit presentItem(DemoProject const& project, ItemEdit const& edit) {
    return std::visit(
        [&](auto const& item) {
            return ItemEdit{edit.index, listOf(project, item).at(edit.index)};
        },
        edit.item);
}

inline void putItem(DemoProject& project, ItemEdit const& edit) {
    std::visit([&](auto const& item) { listOf(project, item).at(edit.index) = item; }, edit.item);
}

}
