#pragma once

#include <fmt/format.h>

#include <concepts>
#include <cstdio>
#include <string>
#include <string_view>
#include <type_traits>

/// What the commands print. All of it passes here: names, texts and sentences may be a stranger's, and a terminal obeys
/// what is written to it.
namespace tavaro::terminal {

/// Text of several lines, whose breaks stay.
struct Lines {
    std::string text;
};

/// The text with "�" for each character that a terminal acts on or that shows text in another order than it has:
/// control characters, of which line breaks and tabs are some, marks of direction, and bytes that are no characters.
std::string harmless(std::string_view text);
/// The same, but breaks and tabs stay.
std::string harmless(Lines const& lines);

template<class Value> auto shown(Value const& value) {
    if constexpr (std::convertible_to<Value const&, std::string_view>)
        return harmless(std::string_view(value));
    else if constexpr (std::same_as<Value, Lines>)
        return harmless(value);
    else
        return value;
}
template<class Value> using Shown = decltype(shown(std::declval<Value const&>()));

/// A result, on standard output.
template<class... Values> void say(fmt::format_string<Shown<Values>...> format, Values const&... values) {
    fmt::print(stdout, format, shown(values)...);
}
/// For who watches, on standard error. Work does not fail where nobody does any more.
template<class... Values> void tell(fmt::format_string<Shown<Values>...> format, Values const&... values) {
    auto const text = fmt::format(format, shown(values)...);
    std::fwrite(text.data(), 1, text.size(), stderr);
}

/// A result for programs. What is harmless only within JSON is escaped.
void sayJSON(std::string_view json);
/// The same of what more follows, whole characters of it.
void sayPieceOfJSON(std::string_view json);
/// The name of what was made, on a line; exactly so where a program reads it.
void sayPath(std::string const& path);

}
