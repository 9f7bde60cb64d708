#pragma once

#include <TavaroCapture/Sources/DesktopEntries.h>

#include <filesystem>
#include <string>
#include <vector>

namespace tavaro {

/// The words of an entry's command, without quotes and without the field codes for files. Empty where it has none, or
/// quotes that do not end.
std::vector<std::string> wordsOfExec(std::string_view exec);

/// How a program is started so that it tells of its widgets.
struct LaunchCommand {
    std::vector<std::string> words;     // the first is the program's file
    std::vector<std::string> variables; // "NAME=value"
    std::filesystem::path folder = "/";
};

/// The entry of a program that is named by its file, as if it were installed.
DesktopEntry entryOfFile(std::filesystem::path const& file);
/// Whether the entry's command is that program and nothing else.
bool startsOnly(DesktopEntry const& entry, std::filesystem::path const& file);

/// Throws `AutomationError` where the program is not there. `display` (":0") is given to it unless empty.
LaunchCommand launchCommand(DesktopEntry const& entry, std::string const& display);

}
