#pragma once

#include <Tavaro/Model/Operations/CaptionOperations.h>
#include <Tavaro/Model/Operations/CleanUpOperations.h>
#include <Tavaro/Model/Operations/DuplicateClip.h>
#include <Tavaro/Model/Operations/FindingOperations.h>
#include <Tavaro/Model/Operations/OperationError.h>
#include <Tavaro/Model/Operations/PatchOperations.h>
#include <Tavaro/Model/Operations/SoundOperations.h>
#include <Tavaro/Model/Operations/TimeOperations.h>
#include <Tavaro/Model/Operations/VoiceoverOperations.h>

#include <type_traits>
#include <utility>
#include <variant>

namespace tavaro {

/// Every edit of a document, as a value, in the order in which they are listed. Flags, arguments of agents and the
/// names of undo steps come from this one list.
using Operation =
    std::variant<operations::Trim, operations::Cut, operations::ChangeSpeed, operations::Split, operations::InsertTime,
                 operations::Mute, operations::ChangeVolume, operations::RemoveSilence, operations::SpeedUpTyping,
                 operations::TightenPauses, operations::RemoveFillers, operations::DeleteWords,
                 operations::CaptionsFromTranscript, operations::CaptionsFromScript, operations::CaptionsFromSubtitles,
                 operations::Patch, operations::SetFields, operations::DuplicateClip, operations::DraftScript,
                 operations::SetScript, operations::AcceptFindings, operations::RejectFindings, operations::HideArea>;

/// Calls `visit(std::type_identity<Record>{})` for each operation.
template<class Visit> void forEachOperation(Visit&& visit) {
    [&]<class... Each>(std::type_identity<std::variant<Each...>>) {
        (visit(std::type_identity<Each>{}), ...);
    }(std::type_identity<Operation>{});
}

/// Calls `visit(field, parameter)` for each field of an operation's record.
template<class Record, class Visit> void forEachParameter(Visit&& visit) {
    static_assert(Record::parameters.size() == fieldCount<Record>, "one parameter for each field");
    [&]<std::size_t... I>(std::index_sequence<I...>) {
        (visit(std::get<I>(Record::fields), Record::parameters[I]), ...);
    }
    (std::make_index_sequence<fieldCount<Record>>{});
}

OperationInfo const& infoOf(Operation const& operation);

/// The operation of that name with the arguments of a JSON object, whose keys are the fields of its record. Throws
/// `OperationError` for what is missing, unknown, of another type or outside its range.
Operation decodeOperation(std::string_view name, JSONValue const& arguments);

/// Throws `OperationError` for the first parameter whose value is outside its range.
void expectParameters(Operation const& operation);

}
