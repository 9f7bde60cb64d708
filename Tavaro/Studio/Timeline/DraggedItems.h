#pragma once

#include <Tavaro/Studio/Timeline/TimelineIntent.h>

#include <TavaroCore/History/ItemEdit.h>

#include <cstddef>
#include <optional>
#include <set>
#include <vector>

namespace tavaro {

/// The items of a drag that changes nothing else, as they were when it began: an intent is carried out on them alone.
class DraggedItems {
public:
    /// None where the intent reaches further than to the items that it names.
    static std::optional<DraggedItems> of(TimelineIntent const& intent, DemoProject const& before);

    /// Whether the intent names the same ones.
    bool areThoseOf(TimelineIntent const& intent) const;
    std::vector<ItemEdit> before() const { return edits(few_); }
    /// As the intent makes them.
    std::vector<ItemEdit> after(TimelineIntent const& intent) const;

private:
    std::vector<ItemEdit> edits(DemoProject const& few) const;

    std::set<UUID> ids_;
    DemoProject few_;                 // with these items and nothing else
    std::vector<std::size_t> places_; // of each in its list of the whole document, list by list
};

}
