#include <Tavaro/Studio/Timeline/TimelineSteps.h>

#include <Tavaro/Studio/Timeline/IntentEdits.h>

#include <type_traits>
#include <variant>

namespace tavaro {

namespace {

using namespace timelineIntents;

/// Copies what differs: to compare long lists is cheaper than to copy them.
void restore(DemoProject& project, DemoProject const& before) {
    forEachField<DemoProject>([&](auto const& field) {
        if (!(project.*field.member == before.*field.member)) project.*field.member = before.*field.member;
    });
}

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
    if (std::holds_alternative<EditCancelled>(intent)) {
        step([](DemoProject&) {});
        drag_.reset();
        return true;
    }
    bool const edits = std::visit([]<class Intent>(Intent const&) { return isEdit<Intent>; }, intent);
    if (edits) step([&](DemoProject& project) { carryOut(intent, project); });
    return edits;
}

void TimelineSteps::step(FunctionRef<void(DemoProject&)> change) {
    if (drag_ && drag_->revision != project_.revision()) drag_.reset();
    if (!drag_) return;
    auto const again = [&](DemoProject& project) {
        restore(project, drag_->before);
        change(project);
    };
    project_.edit(drag_->name, again, drag_->group);
    drag_->revision = project_.revision();
}

}
