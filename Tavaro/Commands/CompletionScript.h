#pragma once

#include <Tavaro/Commands/CommandOutline.h>

#include <string>

namespace tavaro::commands {

/// What the shell reads to complete the commands, options and values of the program. Each finds the command that is
/// being typed by the words before the cursor that name one; what is no choice is a file.
std::string bashCompletion(CommandOutline const& program);
std::string zshCompletion(CommandOutline const& program);
std::string fishCompletion(CommandOutline const& program);

}
