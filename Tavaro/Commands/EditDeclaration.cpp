#include <Tavaro/Commands/EditDeclaration.h>

#include <TavaroCore/Values/Timecode.h>

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <limits>

namespace tavaro::commands {

std::string shownTime(double seconds) { return Timecode::format(seconds, Timecode::Fraction::hundredths); }

std::string shownSpan(TimeRange const& range) { return shownTime(range.start) + "–" + shownTime(range.end()); }

std::optional<double> number(std::string const& text) {
    double value = 0;
    auto const [end, code] = std::from_chars(text.data(), text.data() + text.size(), value);
    bool const isNumber = code == std::errc{} && end == text.data() + text.size() && std::isfinite(value);
    return isNumber ? std::optional(value) : std::nullopt;
}

Check numberFrom(double least, double most, std::string const& noun) {
    return [=](std::string const& text) -> std::string {
        auto const value = number(text);
        if (value && *value >= least && *value <= most) return "";
        return fmt::format("“{}” is not {} from {:g} to {:g}", text, noun, least, most);
    };
}

DeclaredEdit& DeclaredEdit::at(std::string const& name, double EditArguments::*member, std::string const& text) {
    command->add_option(name, (*arguments).*member, text)
        ->required()
        ->check(secondsFrom(0, std::numeric_limits<double>::infinity()));
    return *this;
}

DeclaredEdit& DeclaredEdit::span() {
    return at("FROM", &EditArguments::start, "where it begins, in seconds")
        .at("TO", &EditArguments::end, "where it ends");
}

DeclaredEdit declareEdit(CLI::App& edit, SharedEditOptions const& options, std::string const& name,
                         std::string const& text, EditOperation operation) {
    DeclaredEdit declared{edit.add_subcommand(name, text), std::make_shared<EditArguments>()};
    declared.command->fallthrough();
    declared.command->callback([=, arguments = declared.arguments] {
        runEdit(*options, name, [&](DemoProject& project) { return operation(project, *arguments); });
    });
    return declared;
}

}
