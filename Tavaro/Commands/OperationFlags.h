#pragma once

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Model/Operations/Operation.h>

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <type_traits>
#include <vector>

/// The parameters of operations as arguments of the command line, checked by their descriptions.
namespace tavaro::commands {

/// What the parser asks of a text that is typed for the parameter; empty for those that take any.
Check checkOf(Parameter const& parameter);
/// The JSON in a file, or of standard input for "-". Throws `Error`.
JSONValue readJSONFile(std::string const& file);

/// Declares one; what is typed goes into `value`, which lives as long as the command.
template<class Value> CLI::Option* declareParameter(CLI::App& command, Parameter const& parameter, Value& value) {
    std::string const name(parameter.name), help(parameter.help);
    CLI::Option* option = nullptr;
    if constexpr (std::is_same_v<Value, bool>) {
        return command.add_flag_callback(
            name, [&value, other = !value] { value = other; }, help);
    } else if constexpr (NamedEnum<Value>) {
        option = command.add_option_function<std::string>(
            name, [&value](std::string const& text) { value = enumNamed<Value>(text).value(); }, help);
        option->check(isNameOf<Value>());
    } else if constexpr (std::is_same_v<Value, JSONValue>) {
        option = command.add_option_function<std::string>(
            name, [&value](std::string const& file) { value = readJSONFile(file); }, help);
    } else {
        option = command.add_option(name, value, help);
    }
    if (parameter.presence == Presence::required) option->required();
    if (auto const check = checkOf(parameter)) option->check(check);
    return option;
}

/// Declares the one of a member.
template<class Record, class Value>
CLI::Option* declareMember(CLI::App& command, Record& record, Value Record::*member) {
    CLI::Option* option = nullptr;
    forEachParameter<Record>([&](auto const& field, Parameter const& parameter) {
        if constexpr (std::is_same_v<decltype(field.member), Value Record::*>) {
            if (field.member == member) option = declareParameter(command, parameter, record.*member);
        }
    });
    return option;
}

/// Declares all of an operation; the record lives as long as the command.
template<class Record> void declareParameters(CLI::App& command, Record& record) {
    forEachParameter<Record>([&](auto const& field, Parameter const& parameter) {
        declareParameter(command, parameter, record.*field.member);
    });
}

}
