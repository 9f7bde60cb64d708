#include <Tavaro/Commands/CompletionScript.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <string_view>

namespace tavaro::commands {

namespace {

/// One word for any of the three shells.
std::string quoted(std::string_view text) {
    std::string word = "'";
    for (char const letter : text) word += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    return word + "'";
}

/// fish has other rules within quotes.
std::string fishQuoted(std::string_view text) {
    std::string word = "'";
    for (char const letter : text) {
        if (letter == '\'' || letter == '\\') word += '\\';
        word += letter;
    }
    return word + "'";
}

std::string joined(std::vector<std::string> const& words, std::string_view between = " ") {
    return fmt::format("{}", fmt::join(words, between));
}

/// The patterns of a case: the paths of all commands but the program's own.
std::string paths(CommandOutline const& program) {
    std::vector<std::string> all;
    for (auto const* const command : withAllBelow(program))
        if (command != &program) all.push_back(quoted(command->path));
    return joined(all, " | ");
}

std::vector<std::string> namesOf(std::vector<CommandOutline> const& commands) {
    std::vector<std::string> names;
    for (auto const& command : commands) names.push_back(command.name());
    return names;
}

std::vector<std::string> optionNames(CommandOutline const& command) {
    std::vector<std::string> names;
    for (auto const& option : command.options) names.insert(names.end(), option.names.begin(), option.names.end());
    return names;
}

/// What follows an option that has a value.
std::string bashValue(CommandOutline const& command, OptionOutline const& option) {
    std::vector<std::string> patterns;
    for (auto const& name : option.names) patterns.push_back(quoted(command.path + " " + name));
    auto const pattern = joined(patterns, " | ");
    if (!option.choices.empty())
        return fmt::format("        {}) COMPREPLY=($(compgen -W {} -- \"$word\")); return ;;\n", pattern,
                           quoted(joined(option.choices)));
    if (option.isValueOptional) return {}; // what follows may as well be something else
    return fmt::format("        {}) {}return ;;\n", pattern, option.isNumber() ? "" : "_tavaro_files \"$word\"; ");
}

std::string bashWords(CommandOutline const& command) {
    auto const options = quoted(joined(optionNames(command)));
    std::string text = fmt::format("        {}) options={}", quoted(command.path), options);
    if (!command.commands.empty()) text += fmt::format(" words={}", quoted(joined(namesOf(command.commands))));
    for (auto const& argument : command.arguments)
        if (!argument.choices.empty()) text += fmt::format(" words+=' {}'", joined(argument.choices));
    bool const takesFiles = std::ranges::any_of(
        command.arguments, [](auto const& argument) { return argument.choices.empty() && !argument.isNumber(); });
    if (takesFiles) text += " files=yes";
    return text + " ;;\n";
}

/// A part of what _arguments reads, in which colons and brackets are its own.
std::string zshText(std::string_view text) {
    std::string escaped;
    for (char const letter : text) {
        if (letter == ':' || letter == '[' || letter == ']' || letter == '\\') escaped += '\\';
        escaped += letter;
    }
    return escaped;
}

std::string zshValue(OptionOutline const& option, std::string_view name) {
    auto const values = !option.choices.empty() ? fmt::format("({})", joined(option.choices)) : "_files";
    return fmt::format("{}{}:{}", option.isValueOptional ? "::" : ":", zshText(name), option.isNumber() ? " " : values);
}

constexpr std::string_view nextArgument = " \\\n                ";

std::string zshOption(OptionOutline const& option) {
    std::string arguments;
    for (auto const& name : option.names) {
        auto argument = option.isRepeated ? "*" : fmt::format("({})", joined(option.names));
        argument += fmt::format("{}[{}]", name, zshText(option.help));
        if (!option.value.empty()) argument += zshValue(option, option.value);
        arguments.append(nextArgument).append(quoted(argument));
    }
    return arguments;
}

std::string zshCase(CommandOutline const& command) {
    auto text = fmt::format("        {})\n", quoted(command.path));
    if (!command.commands.empty()) {
        text += "            commands=(";
        for (auto const& below : command.commands)
            text += fmt::format("\n                {}", quoted(below.name() + ":" + below.help));
        text += ")\n";
    }
    text += "            _arguments -S";
    for (auto const& option : command.options) text += zshOption(option);
    for (auto const& argument : command.arguments)
        text.append(nextArgument)
            .append(quoted((argument.isRepeated ? "*" : "") + zshValue(argument, argument.names.front())));
    if (!command.commands.empty()) text.append(nextArgument).append("'*: :{ _describe -t commands command commands }'");
    return text + " ;;\n";
}

std::string fishLine(CommandOutline const& command, std::string_view what) {
    return fmt::format("complete -c tavaro -n '__tavaro_is_at {}' {}\n", command.path, what);
}

std::string fishOption(OptionOutline const& option) {
    std::string text;
    for (auto const& name : option.names) {
        bool const isLong = name.starts_with("--");
        text += fmt::format("{} {} ", isLong ? "-l" : "-s", name.substr(isLong ? 2 : 1));
    }
    if (!option.choices.empty())
        text += fmt::format("-x -a {} ", fishQuoted(joined(option.choices)));
    else if (option.isNumber())
        text += "-x ";
    else if (!option.value.empty() && !option.isValueOptional)
        text += "-r -F ";
    return fmt::format("{}-d {}", text, fishQuoted(option.help));
}

std::string fishLines(CommandOutline const& command) {
    std::string text;
    for (auto const& below : command.commands)
        text += fishLine(command, fmt::format("-f -a {} -d {}", below.name(), fishQuoted(below.help)));
    for (auto const& option : command.options) text += fishLine(command, fishOption(option));
    for (auto const& argument : command.arguments) {
        if (!argument.choices.empty())
            text += fishLine(command, fmt::format("-f -a {}", fishQuoted(joined(argument.choices))));
        else if (!argument.isNumber())
            text += fishLine(command, "-F");
    }
    return text;
}

}

std::string bashCompletion(CommandOutline const& program) {
    std::string values, words;
    for (auto const* const command : withAllBelow(program)) {
        words += bashWords(*command);
        for (auto const& option : command->options)
            if (!option.value.empty()) values += bashValue(*command, option);
    }
    return fmt::format(R"(# Completes the commands of tavaro in bash.
_tavaro_files() {{
    local -a found
    mapfile -t found < <(compgen -f -- "$1")
    COMPREPLY+=("${{found[@]}}")
    compopt -o filenames 2>/dev/null # none outside of a completion
}}
_tavaro() {{
    local at=tavaro word=${{COMP_WORDS[COMP_CWORD]}} before=${{COMP_WORDS[COMP_CWORD - 1]}} options= words= files= i
    # A value that follows "=" is a word of its own.
    [[ $before == = ]] && before=${{COMP_WORDS[COMP_CWORD - 2]}}
    [[ $word == = ]] && word=
    for ((i = 1; i < COMP_CWORD; i++)); do
        case "$at ${{COMP_WORDS[i]}}" in
        {}) at+=" ${{COMP_WORDS[i]}}" ;;
        esac
    done
    COMPREPLY=()
    case "$at $before" in
{}    esac
    case $at in
{}    esac
    if [[ $word == -* ]]; then
        COMPREPLY=($(compgen -W "$options" -- "$word"))
    else
        COMPREPLY=($(compgen -W "$words" -- "$word"))
        [[ -n $files ]] && _tavaro_files "$word"
    fi
}}
complete -F _tavaro tavaro
)",
                       paths(program), values, words);
}

std::string zshCompletion(CommandOutline const& program) {
    std::string cases;
    for (auto const* const command : withAllBelow(program)) cases += zshCase(*command);
    return fmt::format(R"(#compdef tavaro
# Completes the commands of tavaro in zsh.
_tavaro() {{
    local at=tavaro i last=1
    local -a commands
    for ((i = 2; i < CURRENT; i++)); do
        case "$at $words[i]" in
        {}) at+=" $words[i]" last=$i ;;
        esac
    done
    words=("${{(@)words[last,-1]}}")
    ((CURRENT -= last - 1))
    case $at in
{}    esac
}}
if [[ $funcstack[1] == _tavaro ]]; then
    _tavaro "$@"
else
    compdef _tavaro tavaro
fi
)",
                       paths(program), cases);
}

std::string fishCompletion(CommandOutline const& program) {
    std::vector<std::string> all;
    std::string lines;
    for (auto const* const command : withAllBelow(program)) {
        if (command != &program) all.push_back(fishQuoted(command->path));
        lines += fishLines(*command);
    }
    return fmt::format(R"(# Completes the commands of tavaro in fish.
function __tavaro_is_at
    set -l commands {}
    set -l at tavaro
    for word in (commandline -opc)[2..]
        contains -- "$at $word" $commands; and set at "$at $word"
    end
    test "$at" = "$argv"
end
complete -c tavaro -f
{})",
                       joined(all), lines);
}

}
