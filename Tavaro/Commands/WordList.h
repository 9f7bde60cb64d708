#pragma once

#include <Tavaro/Commands/Edit.h>

#include <memory>

namespace CLI {
class App;
}

namespace tavaro::commands {

/// Gives the command that deletes words a flag to list them with their numbers instead.
void offerWordList(CLI::App& command, std::shared_ptr<EditOptions> const& options,
                   std::shared_ptr<operations::DeleteWords> const& deletion);

}
