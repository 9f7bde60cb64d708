#include <Tavaro/Model/Operations/Parameter.h>

#include <fmt/format.h>

#include <charconv>
#include <cmath>

namespace tavaro {

std::optional<double> finiteNumber(std::string const& text) {
    double value = 0;
    auto const [end, code] = std::from_chars(text.data(), text.data() + text.size(), value);
    bool const isNumber = code == std::errc{} && end == text.data() + text.size() && std::isfinite(value);
    return isNumber ? std::optional(value) : std::nullopt;
}

std::string numberProblem(NumberRange const& range, std::string const& text) {
    auto const value = finiteNumber(text);
    if (value && range.contains(*value)) return "";
    auto const ends = std::isfinite(range.most) ? fmt::format("from {:g} to {:g}", range.least, range.most)
                                                : fmt::format("of {:g} or more", range.least);
    return fmt::format("“{}” is not {} {}", text, range.noun, ends);
}

std::string valueProblem(Parameter const& parameter, std::string_view field, double value) {
    if (!parameter.range || (std::isfinite(value) && parameter.range->contains(value))) return "";
    if (!std::isfinite(parameter.range->most))
        return fmt::format("{} must be {:g} or more.", field, parameter.range->least);
    return fmt::format("{} must be {:g}–{:g}.", field, parameter.range->least, parameter.range->most);
}

std::string valueProblem(Parameter const& parameter, std::string_view field, std::string const& text) {
    if (!parameter.textProblem) return "";
    auto const problem = parameter.textProblem(text);
    return problem.empty() ? "" : fmt::format("{}: {}.", field, problem);
}

}
