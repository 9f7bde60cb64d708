#include <Tavaro/Studio/Editor/DragStep.h>

#include <utility>

namespace tavaro {

/// To compare long lists is cheaper than to copy them.
void restore(DemoProject& project, DemoProject const& before) {
    forEachField<DemoProject>([&](auto const& field) {
        if (!(project.*field.member == before.*field.member)) project.*field.member = before.*field.member;
    });
}

DragStep::DragStep(OpenProject& project, std::string name)
    : project_(project)
    , name_(std::move(name))
    , group_(project.newGroup())
    , before_(project.document())
    , revision_(project.revision()) {}

bool DragStep::change(FunctionRef<void(DemoProject&)> change) {
    project_.refresh(); // or what another program saved since the last change would be taken back
    if (isOver()) return false;
    auto const again = [&](DemoProject& project) {
        restore(project, before_);
        change(project);
    };
    project_.edit(name_, again, group_);
    revision_ = project_.revision();
    return true;
}

void DragStep::takeBack() {
    change([](DemoProject&) {});
}

}
