#include <Tavaro/Commands/CommandOutline.h>

#include <CLI/CLI.hpp>

#include <sstream>
#include <utility>

namespace tavaro::commands {

namespace {

/// What lies between the marks, and the text without it.
std::string taken(std::string& text, std::string const& before, std::string const& after) {
    auto const from = text.find(before);
    if (from == std::string::npos) return {};
    auto const to = text.find(after, from + before.size());
    if (to == std::string::npos) return {};
    auto const found = text.substr(from + before.size(), to - from - before.size());
    text.erase(from, to + after.size() - from);
    return found;
}

std::vector<std::string> split(std::string const& text, char at) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, at);) parts.push_back(part);
    return parts;
}

/// The parser tells of checks in the name of the type only: "TEXT:{a,b}", "INT:INT in [0 - 60]".
void readType(std::string type, OptionOutline& option) {
    option.choices = split(taken(type, ":{", "}"), ',');
    option.range = taken(type, " in [", "]");
    option.value = type.substr(0, type.find(':'));
    if (option.value.starts_with('[')) option.value = option.value.substr(1, option.value.find(']') - 1);
}

OptionOutline outlineOf(CLI::Option const& option) {
    OptionOutline outline{.isRepeated = option.get_expected_max() > 1,
                          .isRequired = option.get_required(),
                          .fallback = option.get_default_str(),
                          .help = option.get_description()};
    for (auto const& name : option.get_snames()) outline.names.push_back("-" + name);
    for (auto const& name : option.get_lnames()) outline.names.push_back("--" + name);
    if (outline.names.empty()) outline.names.push_back(option.get_name(true));
    if (option.get_items_expected_max() == 0) return outline; // a switch
    outline.isValueOptional = option.get_expected_min() == 0;
    readType(option.get_type_name(), outline);
    return outline;
}

void addOptions(CLI::App const& app, CommandOutline& outline) {
    bool const isGroup = app.get_name().empty(); // whose own help is none of the command's
    for (auto const* const option : app.get_options()) {
        if (option->get_group().empty() || (isGroup && option == app.get_help_ptr())) continue;
        (option->nonpositional() ? outline.options : outline.arguments).push_back(outlineOf(*option));
    }
}

CommandOutline outlineOf(CLI::App const& app, std::string path) {
    CommandOutline outline{.path = std::move(path), .help = app.get_description(), .footer = app.get_footer()};
    addOptions(app, outline);
    for (auto const* const below : app.get_subcommands([](CLI::App const*) { return true; })) {
        if (below->get_group().empty()) continue;
        if (below->get_name().empty())
            addOptions(*below, outline); // a group of options
        else
            outline.commands.push_back(outlineOf(*below, outline.path + " " + below->get_name()));
    }
    return outline;
}

}

CommandOutline outlineOf(CLI::App const& app) { return outlineOf(app, app.get_name()); }

std::vector<CommandOutline const*> withAllBelow(CommandOutline const& command) {
    std::vector<CommandOutline const*> all{&command};
    for (auto const& below : command.commands)
        for (auto const* const each : withAllBelow(below)) all.push_back(each);
    return all;
}

}
