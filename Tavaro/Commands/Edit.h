#pragma once

#include <Tavaro/Model/Operations/Perform.h>

#include <string>

namespace tavaro::commands {

struct EditOptions {
    std::string package;
    bool asJSON = false;
};

/// Loads the project, makes the operation, saves what changed, and prints what it did.
void runEdit(EditOptions const& options, Operation const& operation);

/// As a line with the length before and after, or as JSON.
void print(EditReport const& report, EditOptions const& options);

}
