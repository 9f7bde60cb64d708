#pragma once

#include <Tavaro/Model/Operations/Parameter.h>

#include <string_view>

namespace tavaro {

/// Where the command line offers an operation.
enum class OperationCommand { edit, captions, script };

/// What an operation is called. Its record has this as `info`, and as `parameters` one `Parameter` for each of its
/// `fields`, in their order.
struct OperationInfo {
    std::string_view name;  // for commands and agents
    std::string_view title; // of the step in an undo menu
    std::string_view help;
    OperationCommand command = OperationCommand::edit;
};

}
