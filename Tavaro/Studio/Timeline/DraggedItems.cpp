#include <Tavaro/Studio/Timeline/DraggedItems.h>

#include <Tavaro/Studio/Timeline/IntentEdits.h>

#include <variant>

namespace tavaro {

namespace {

using namespace timelineIntents;

/// Empty for what reaches further: a clip moves what is over it.
std::set<UUID> namedBy(TimelineIntent const& intent) {
    if (auto const* move = std::get_if<MoveItems>(&intent)) return move->ids;
    if (auto const* trim = std::get_if<TrimItem>(&intent)) return {trim->id};
    if (auto const* ramp = std::get_if<SetRamp>(&intent)) return {ramp->id};
    return {};
}

}

std::optional<DraggedItems> DraggedItems::of(TimelineIntent const& intent, DemoProject const& before) {
    DraggedItems dragged;
    dragged.ids_ = namedBy(intent);
    if (dragged.ids_.empty()) return std::nullopt;
    std::set<UUID> found;
    forEachEditedList(before, [&](auto const& items) {
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (!dragged.ids_.contains(items[i].id)) continue;
            found.insert(items[i].id);
            listOf(dragged.few_, items[i]).push_back(items[i]);
            dragged.places_.push_back(i);
        }
    });
    if (found != dragged.ids_) return std::nullopt;
    return dragged;
}

bool DraggedItems::areThoseOf(TimelineIntent const& intent) const { return namedBy(intent) == ids_; }

std::vector<ItemEdit> DraggedItems::after(TimelineIntent const& intent) const {
    auto few = few_;
    carryOut(intent, few);
    return edits(few);
}

std::vector<ItemEdit> DraggedItems::edits(DemoProject const& few) const {
    std::vector<ItemEdit> edits;
    forEachEditedList(few, [&](auto const& items) {
        for (auto const& item : items) edits.push_back({places_[edits.size()], item});
    });
    return edits;
}

}
