#include <Tavaro/Model/Operations/DuplicateClip.h>

#include <Tavaro/Model/Operations/Private/EditedProject.h>

#include <TavaroCore/Editing/ClipEdits.h>
#include <TavaroCore/Project/DemoProject.h>

#include <fmt/format.h>

namespace tavaro::operations {

std::string clipProblem(std::string const& text) {
    return namesClip(text) ? "" : fmt::format("“{}” is no time in seconds and no clip's id", text);
}

std::string apply(DemoProject& project, DuplicateClip const& duplication) {
    auto const clip = clipNamed(project, duplication.what);
    duplicateClip(project, clip.id);
    return "Duplicated the clip at " + shownSpan(clip.range());
}

}
