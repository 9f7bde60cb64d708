#include <Tavaro/Studio/Timeline/TimelineSteps.h>

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
        drag_.emplace(project_, begun->name);
        return true;
    }
    if (std::holds_alternative<EditEnded>(intent)) {
        drag_.reset();
        return true;
    }
    if (std::holds_alternative<EditCancelled>(intent)) {
        if (drag_) drag_->takeBack();
        drag_.reset();
        return true;
    }
    bool const edits = std::visit([]<class Intent>(Intent const&) { return isEdit<Intent>; }, intent);
    if (edits && drag_) drag_->change([&](DemoProject& project) { carryOut(intent, project); });
    return edits;
}

}
