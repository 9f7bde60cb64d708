#pragma once

#include <Tavaro/Model/Operations/OperationInfo.h>

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/JSONValue.h>

#include <array>
#include <string>
#include <vector>

/// The operations that change any field of the document. What is protected, is no field, or has a value that does not
/// fit is refused, with its path. `background` also takes {"preset": ID}, which means that preset's style.
namespace tavaro {

struct DemoProject;

namespace operations {

/// A merge patch (RFC 7386) of the document's JSON.
struct Patch {
    JSONValue patch;

    static constexpr OperationInfo info{.name = "patch",
                                        .title = "Change Project",
                                        .help = "Changes fields of the document as a JSON merge patch says"};
    static constexpr std::array parameters{
        Parameter{.name = "FILE", .help = "the patch, an object of fields; - is standard input"}};
    static constexpr auto fields = std::tuple{field("patch", &Patch::patch)};
    bool operator==(Patch const&) const = default;
};
static_assert(listsEveryField<Patch>);

/// The problem with a text that is no PATH=VALUE, or nothing.
std::string changeProblem(std::string const& text);

/// "Where it is = the value", one after another: names of fields, cases and numbers of items with dots between, and
/// JSON, or else the text as it is; so also a number or a switch where the field takes a text.
struct SetFields {
    std::vector<std::string> changes;

    static constexpr OperationInfo info{
        .name = "set", .title = "Change Project", .help = "Changes fields of the document, as camera.isEnabled=true"};
    static constexpr std::array parameters{
        Parameter{.name = "FIELD",
                  .help = "PATH=VALUE, as zoomEvents.0.scale=2; null takes a field back to its default",
                  .textProblem = changeProblem}};
    static constexpr auto fields = std::tuple{field("changes", &SetFields::changes)};
    bool operator==(SetFields const&) const = default;
};
static_assert(listsEveryField<SetFields>);

/// The same for code that has paths and values, all at once; each path begins at a field of the document.
struct FieldChange {
    std::string path;
    JSONValue value;
};

std::string apply(DemoProject& project, Patch const& patch);
std::string apply(DemoProject& project, SetFields const& fields);
std::string apply(DemoProject& project, std::vector<FieldChange> const& changes);

}

}
