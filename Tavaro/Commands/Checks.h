#pragma once

#include <TavaroCore/Files/PendingFile.h>

#include <filesystem>
#include <functional>
#include <string>

namespace CLI {
class App;
}

/// Checks of what was typed after an option: the problem as a phrase, or nothing. The parser puts the option's name
/// before it and ends with the exit code of wrong usage.
namespace tavaro::commands {

using Check = std::function<std::string(std::string const&)>;

std::string notEmpty(std::string const& text);
/// Of a project that is to be made: ".", ".." and "/" name folders, and ".recproj" would be hidden.
std::string projectName(std::string const& text);

/// A file name's ending in lower case, ".mp4"; empty where it has none.
std::string endingOf(std::filesystem::path const& file);

/// A number of seconds from `least` to `most`; infinity is no end.
Check secondsFrom(double least, double most);

/// Adds --overwrite to a command that writes a file of a given name.
void addOverwriting(CLI::App& command, PendingFile::IfTaken& ifTaken);
/// Before work on a file begins that could not be written: fails where it has to be new and something has the name.
void expectWritable(std::filesystem::path const& file, PendingFile::IfTaken ifTaken);

/// Runs a reader of the option's text, whose failures are the problem.
Check readableBy(std::function<void(std::string const&)> read);

}
