#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace tavaro::commands {

/// An option or an argument, as its command declares it.
struct OptionOutline {
    std::vector<std::string> names; // "-o", "--output"; of an argument the one that the help gives it
    std::string value;              // what its value is called; empty: it has none
    bool isValueOptional = false;
    bool isRepeated = false;
    bool isRequired = false;
    std::vector<std::string> choices; // empty: any value
    std::string range;                // "0 - 60", of a number
    std::string fallback;             // what it is when it is not given; empty: not said
    std::string help;

    bool isNumber() const { return value == "INT" || value == "FLOAT" || value == "UINT"; }
};

/// A command as the parser knows it, for whoever describes or completes it.
struct CommandOutline {
    std::string path; // "tavaro edit cut"
    std::string help;
    std::string footer;
    std::vector<OptionOutline> options;
    std::vector<OptionOutline> arguments;
    std::vector<CommandOutline> commands;

    std::string name() const { return path.substr(path.rfind(' ') + 1); }
};

/// Of the program with everything below it, but what its help leaves out.
CommandOutline outlineOf(CLI::App const& app);

/// The command and all below it, in the order of the help.
std::vector<CommandOutline const*> withAllBelow(CommandOutline const& command);

}
