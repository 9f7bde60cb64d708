#include <Tavaro/Studio/Timeline/TimelineSteps.h>

#include <Tavaro/Studio/Editor/DragStep.h>
#include <Tavaro/Studio/Timeline/IntentEdits.h>

#include <type_traits>
#include <variant>

namespace tavaro {

namespace {

using namespace timelineIntents;

template<class Intent> constexpr bool isEdit = std::is_same_v<Intent, MoveItems> || std::is_same_v<Intent, TrimItem> ||
                                               std::is_same_v<Intent, SetRamp> || std::is_same_v<Intent, SlipClip> ||
                                               std::is_same_v<Intent, PlaceClip>;

}

bool TimelineSteps::take(TimelineIntent const& intent) {
    if (auto const* begun = std::get_if<EditBegan>(&intent)) {
        drag_ = Drag{begun->name, project_.newGroup(), project_.document(), project_.revision()};
        return true;
    }
    if (std::holds_alternative<EditEnded>(intent)) {
        drag_.reset();
        return true;
    }
    bool const isCancelled = std::holds_alternative<EditCancelled>(intent);
    bool const edits = isCancelled || std::visit([]<class Intent>(Intent const&) { return isEdit<Intent>; }, intent);
    if (edits) step(intent);
    if (isCancelled) drag_.reset();
    return edits;
}

void TimelineSteps::step(TimelineIntent const& intent) {
    project_.refresh();
    if (drag_ && drag_->revision != project_.revision()) drag_.reset();
    if (!drag_) return;
    if (!stepOfItems(intent)) {
        drag_->items.reset();
        auto const again = [&](DemoProject& project) {
            restore(project, drag_->before);
            carryOut(intent, project);
        };
        project_.edit(drag_->name, again, drag_->group);
        drag_->isWhole = true;
    }
    drag_->revision = project_.revision();
}

/// False where the whole document is to be edited: by this intent, or since an earlier one of the drag did.
bool TimelineSteps::stepOfItems(TimelineIntent const& intent) {
    if (drag_->isWhole) return false;
    if (std::holds_alternative<EditCancelled>(intent)) {
        if (drag_->items) project_.editItems(drag_->name, drag_->items->before(), drag_->group);
        return true;
    }
    if (!drag_->items) drag_->items = DraggedItems::of(intent, drag_->before);
    if (!drag_->items || !drag_->items->areThoseOf(intent)) return false;
    project_.editItems(drag_->name, drag_->items->after(intent), drag_->group);
    return true;
}

}
