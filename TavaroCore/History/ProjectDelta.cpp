#include <TavaroCore/History/ProjectDelta.h>

#include <TavaroCore/History/Private/DeltaCoding.h>
#include <TavaroCore/Project/DemoProject.h>

namespace tavaro {

ProjectDelta ProjectDelta::between(DemoProject const& from, DemoProject const& to) {
    ProjectDelta delta;
    if (delta::same(from, to)) return delta;
    DeltaWriter(delta).change(from, to);
    delta.changes_.shrink_to_fit();
    return delta;
}

ProjectDelta ProjectDelta::apply(DemoProject& project) const {
    ProjectDelta back;
    if (isEmpty()) return back;
    back.changes_.reserve(changes_.size());
    DeltaWriter writer(back);
    DeltaReader(*this, writer).apply(project);
    back.changes_.shrink_to_fit();
    return back;
}

std::size_t ProjectDelta::bytes() const {
    return changes_.capacity() + parts_.capacity() * sizeof parts_[0] + partBytes_;
}

}
