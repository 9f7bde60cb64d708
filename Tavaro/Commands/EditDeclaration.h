#pragma once

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/EditOperations.h>

#include <TavaroCore/Values/TimeRange.h>

#include <CLI/CLI.hpp>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

/// What the operations of `tavaro edit` are declared with.
namespace tavaro::commands {

/// The parameters of an operation; each uses its own.
struct EditArguments {
    double start = 0;
    double end = 0;
    double amount = 0;
    double kept = 0;
    std::string what;
    std::optional<std::size_t> first;
    std::optional<std::size_t> last;
    bool isSwitched = false;

    TimeRange range() const { return {start, end - start}; }
};

using EditOperation = std::string (*)(DemoProject&, EditArguments const&);

/// An operation whose parameters are still to be named.
struct DeclaredEdit {
    CLI::App* command;
    std::shared_ptr<EditArguments> arguments;

    /// A required time.
    DeclaredEdit& at(std::string const& name, double EditArguments::*member, std::string const& text);
    /// FROM and TO.
    DeclaredEdit& span();
};

DeclaredEdit declareEdit(CLI::App& edit, SharedEditOptions const& options, std::string const& name,
                         std::string const& text, EditOperation operation);

/// The whole text as a finite number.
std::optional<double> number(std::string const& text);
/// Checks for a number of that range; the noun says of what, as in "a rate".
Check numberFrom(double least, double most, std::string const& noun);

/// "1:05.50"
std::string shownTime(double seconds);
std::string shownSpan(TimeRange const& range);

}
