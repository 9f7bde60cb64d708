#pragma once

#include <Tavaro/Model/Operations/OperationInfo.h>

#include <TavaroCore/Records/Fields.h>
#include <TavaroVoice/Script/AutoDirectorScript.h>

#include <array>
#include <optional>
#include <string>

/// The operations that make the script of a voice-over, in place of the one that the project has. A line that stays as
/// it was keeps its audio.
namespace tavaro::operations {

struct DraftScript {
    std::string productName; // empty or "this" is the demonstrated application
    AutoDirectorScript::Style style = AutoDirectorScript::Style::demo;

    static constexpr OperationInfo info{.name = "draft-script",
                                        .title = "Draft Script",
                                        .help = "drafts it from what happens in the film",
                                        .command = OperationCommand::script};
    static std::string nameProblem(std::string const& name);
    static constexpr std::array parameters{
        Parameter{.name = "--product",
                  .help = "what the film is about; the demonstrated application without",
                  .presence = Presence::optional,
                  .textProblem = nameProblem},
        Parameter{.name = "--style", .help = "what it is for", .presence = Presence::optional}};
    static constexpr auto fields = std::tuple{
        field("productName", &DraftScript::productName),
        field("style", &DraftScript::style),
    };
    bool operator==(DraftScript const&) const = default;
};
static_assert(listsEveryField<DraftScript>);

struct SetScript {
    std::string script;              // the text itself
    std::optional<std::string> file; // whose text it is, for sentences

    static constexpr OperationInfo info{.name = "set-script",
                                        .title = "Set Script",
                                        .help = "takes it from a text file; lines may begin with times",
                                        .command = OperationCommand::script};
    static constexpr std::array parameters{
        Parameter{.name = "--from", .help = "the text"},
        Parameter{.name = "--file", .help = "the name of the text, for messages", .presence = Presence::optional}};
    static constexpr auto fields = std::tuple{
        field("script", &SetScript::script),
        field("file", &SetScript::file),
    };
    bool operator==(SetScript const&) const = default;
};
static_assert(listsEveryField<SetScript>);

std::string apply(DemoProject& project, DraftScript const& drafting);
std::string apply(DemoProject& project, SetScript const& setting);

}
