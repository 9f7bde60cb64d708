#pragma once

#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

/// The numbers that a parameter takes, ends included.
struct NumberRange {
    double least = 0;
    double most = std::numeric_limits<double>::infinity();
    std::string_view noun = "a number of seconds"; // what such a number is called: "a rate"

    bool contains(double value) const { return value >= least && value <= most; }
};

enum class Presence { required, optional };

/// What one field of an operation is for whoever gives it: its name and help on the command line, and which values it
/// takes. Flags, arguments of agents and code are held to the same.
struct Parameter {
    std::string_view name; // "FROM" where its place says which it is, "--threshold" where its name does
    std::string_view help;
    Presence presence = Presence::required;
    std::optional<NumberRange> range = {};
    /// For texts: the problem with one as a phrase, or nothing.
    std::string (*textProblem)(std::string const&) = nullptr;

    bool isOption() const { return name.starts_with("--"); }
};

/// The problem, as a phrase, with a text that was typed as such a number; or nothing.
std::string numberProblem(NumberRange const& range, std::string const& text);
/// The same with a value for the parameter's field, as a sentence: "rate must be 0.25–16."
std::string valueProblem(Parameter const& parameter, std::string_view field, double value);
std::string valueProblem(Parameter const& parameter, std::string_view field, std::string const& text);

/// The whole text as a finite number.
std::optional<double> finiteNumber(std::string const& text);

}
