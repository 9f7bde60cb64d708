#include <TavaroCore/History/ProjectDelta.h>

#include <TavaroCore/History/ChangedFields.h>
#include <TavaroCore/History/ItemEdit.h>
#include <TavaroCore/History/Private/DeltaCoding.h>
#include <TavaroCore/Project/DemoProject.h>

#include <algorithm>

namespace tavaro {

namespace {

constexpr std::size_t documentMask = (fieldCount<DemoProject> + 7) / 8; // bytes; it comes first

bool isAllZero(std::string const& bytes) {
    return std::ranges::all_of(bytes, [](char byte) { return byte == 0; });
}

}

ProjectDelta ProjectDelta::between(DemoProject const& from, DemoProject const& to) {
    ProjectDelta delta;
    DeltaWriter(delta).change(from, to);
    if (delta.changes_.size() == documentMask && isAllZero(delta.changes_)) return {};
    delta.changes_.shrink_to_fit();
    return delta;
}

ProjectDelta ProjectDelta::between(DemoProject const& from, std::span<ItemEdit const> to) {
    ProjectDelta delta;
    if (!DeltaWriter(delta).items(from, to)) return {};
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

ChangedFields ProjectDelta::changedFields() const {
    ChangedFields fields;
    if (isEmpty()) return fields;
    for (std::size_t i = 0; i < fieldCount<DemoProject>; ++i) {
        if (changes_[i / 8] >> i % 8 & 1) fields.add(i); // the document's own bits come first
    }
    return fields;
}

std::size_t ProjectDelta::bytes() const {
    return changes_.capacity() + parts_.capacity() * sizeof parts_[0] + partBytes_;
}

}
