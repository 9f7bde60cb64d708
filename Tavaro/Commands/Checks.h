#pragma once

#include <filesystem>
#include <functional>
#include <string>

/// Checks of what was typed after an option: the problem as a phrase, or nothing. The parser puts the option's name
/// before it and ends with the exit code of wrong usage.
namespace tavaro::commands {

using Check = std::function<std::string(std::string const&)>;

std::string notEmpty(std::string const& text);

/// A file name's ending in lower case, ".mp4"; empty where it has none.
std::string endingOf(std::filesystem::path const& file);

/// A number of seconds from `least` to `most`; infinity is no end.
Check secondsFrom(double least, double most);

/// Runs a reader of the option's text, whose failures are the problem.
Check readableBy(std::function<void(std::string const&)> read);

}
