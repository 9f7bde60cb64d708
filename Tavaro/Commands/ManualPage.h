#pragma once

#include <Tavaro/Commands/CommandOutline.h>

#include <string>
#include <string_view>

namespace tavaro::commands {

/// The manual page of the program, or of one of its commands with what that has below it, for man(1). `more` is text in
/// the page's own language that the outline cannot know: sections that come before what other pages there are.
std::string manualPage(CommandOutline const& command, CommandOutline const& program, std::string_view more = {});
/// "tavaro-record".
std::string manualPageName(CommandOutline const& command);

}
