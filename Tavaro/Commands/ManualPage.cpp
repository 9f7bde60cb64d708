#include <Tavaro/Commands/ManualPage.h>

#include <TavaroPlatform/Version/Version.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cctype>
#include <utility>
#include <vector>

namespace tavaro::commands {

namespace {

/// Text that the language of manual pages takes as it is. A hyphen would be set as another character than the one that
/// has to be typed.
std::string plain(std::string_view text) {
    std::string escaped;
    bool beginsLine = true, isCode = false;
    for (char const letter : text) {
        if (letter == '`') {
            escaped += std::exchange(isCode, !isCode) ? "\\fR" : "\\fB";
            continue;
        }
        if (beginsLine && (letter == '.' || letter == '\'')) escaped += "\\&";
        beginsLine = letter == '\n';
        if (letter == '\\')
            escaped += "\\e";
        else if (letter == '-')
            escaped += "\\-";
        else
            escaped += letter;
    }
    return escaped;
}

std::string bold(std::string_view text) { return fmt::format("\\fB{}\\fR", plain(text)); }
std::string italic(std::string_view text) { return fmt::format("\\fI{}\\fR", plain(text)); }

std::string section(std::string_view title) { return fmt::format(".SH {}\n", title); }

std::string sentence(std::string text) {
    if (text.empty()) return text;
    text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
    return std::string_view(".!?:").find(text.back()) == std::string_view::npos ? text + '.' : text;
}

/// As the list of all pages has it.
std::string inList(std::string text) {
    if (!text.starts_with("Tavaro "))
        text.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(text.front())));
    return plain(text);
}

std::string headOf(OptionOutline const& option) {
    std::string head;
    for (auto const& name : option.names) head += (head.empty() ? "" : ", ") + bold(name);
    if (option.value.empty()) return head;
    auto const value = italic(option.value);
    return head + (option.isValueOptional ? " [" + value + "]" : " " + value);
}

std::string entry(OptionOutline const& option, std::string const& head) {
    auto text = fmt::format(".TP\n{}\n{}\n", head, plain(sentence(option.help)));
    if (!option.choices.empty()) {
        std::string all;
        for (auto const& choice : option.choices) all += (all.empty() ? "" : ", ") + bold(choice);
        text += fmt::format("One of {}.\n", all);
    }
    if (!option.range.empty()) text += fmt::format("In the range {}.\n", plain(option.range));
    if (!option.fallback.empty()) text += fmt::format("Usually {}.\n", plain(option.fallback));
    return text;
}

std::string synopsis(CommandOutline const& command) {
    auto line = bold(command.path) + " [" + italic("OPTIONS") + "]";
    for (auto const& argument : command.arguments) {
        auto const name = italic(argument.names.front()) + (argument.isRepeated ? " ..." : "");
        line += argument.isRequired ? " " + name : " [" + name + "]";
    }
    if (!command.commands.empty()) line += " " + italic("COMMAND");
    return line + "\n";
}

std::string entries(CommandOutline const& command) {
    std::string text;
    for (auto const& argument : command.arguments) text += entry(argument, italic(argument.names.front()));
    for (auto const& option : command.options) text += entry(option, headOf(option));
    return text;
}

std::string list(std::vector<CommandOutline> const& commands) {
    std::string text;
    for (auto const& each : commands)
        text += fmt::format(".TP\n{}\n{}\n", bold(each.name()), plain(sentence(each.help)));
    return text;
}

std::string below(CommandOutline const& command) {
    std::string text;
    for (auto const& each : command.commands) {
        text += fmt::format(".SS {}\n{}.PP\n{}\n{}", plain(each.path), synopsis(each), plain(sentence(each.help)),
                            entries(each));
        text += below(each);
    }
    return text;
}

std::string seeAlso(CommandOutline const& command, CommandOutline const& program) {
    std::vector<std::string> pages;
    auto const add = [&](std::string const& name) {
        if (name != manualPageName(command)) pages.push_back(fmt::format("{}(1)", bold(name)));
    };
    add(program.name());
    if (&command == &program)
        for (auto const& each : program.commands) add(manualPageName(each));
    add("tavaro-studio");
    return fmt::format("{}", fmt::join(pages, ",\n")) + "\n";
}

}

std::string manualPageName(CommandOutline const& command) {
    auto name = command.path;
    std::ranges::replace(name, ' ', '-');
    return name;
}

std::string manualPage(CommandOutline const& command, CommandOutline const& program, std::string_view more) {
    auto title = manualPageName(command);
    bool const isProgram = &command == &program;
    auto text = fmt::format(".TH {} 1 \"\" \"Tavaro {}\" \"Tavaro\"\n", plain(title), programVersion());
    text += section("NAME") + plain(title) + " \\- " + inList(command.help) + "\n";
    text += section("SYNOPSIS") + synopsis(command);
    text += section("DESCRIPTION") + plain(sentence(command.help)) + "\n";
    if (!command.footer.empty()) text += ".PP\n" + plain(command.footer) + "\n";
    text += section("OPTIONS") + entries(command);
    if (!command.commands.empty()) text += section("COMMANDS") + (isProgram ? list(command.commands) : below(command));
    text += more;
    text += section("\"EXIT STATUS\"") +
            "0 when it is done, 1 when it failed, with a sentence on standard error, 2 for wrong usage.\n";
    return text + section("\"SEE ALSO\"") + seeAlso(command, program);
}

}
