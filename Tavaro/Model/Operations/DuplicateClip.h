#pragma once

#include <Tavaro/Model/Operations/OperationInfo.h>

#include <TavaroCore/Records/Fields.h>

#include <array>
#include <string>

namespace tavaro {

struct DemoProject;

namespace operations {

/// The problem with a text that names no clip, or nothing.
std::string clipProblem(std::string const& text);

struct DuplicateClip {
    std::string what; // a time at which the clip is shown, or its id

    static constexpr OperationInfo info{
        .name = "duplicate-clip", .title = "Duplicate Clip", .help = "Shows a clip once more, right behind itself"};
    static constexpr std::array parameters{
        Parameter{.name = "WHAT", .help = "a time at which the clip is shown, or its id", .textProblem = clipProblem}};
    static constexpr auto fields = std::tuple{field("what", &DuplicateClip::what)};
    bool operator==(DuplicateClip const&) const = default;
};
static_assert(listsEveryField<DuplicateClip>);

std::string apply(DemoProject& project, DuplicateClip const& duplication);

}

}
