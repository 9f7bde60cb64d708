#pragma once

#include <TavaroCore/Records/JSONValue.h>

#include <filesystem>
#include <string>

namespace tavaro {

/// What the application did, for people and for programs.
struct ControlAnswer {
    std::string sentence;
    JSONValue::Object details; // "state": "recording", "saved" or "notBegun"; "path" and "duration" of what was saved
};

/// Begins the recording that the user has chosen, or ends the one in progress, in the application that runs. Returns
/// once the take has begun, or is saved. `client` is who the take is said to have been started by. Throws `Error`.
ControlAnswer toggleRecording(std::string const& client, std::filesystem::path const& socket);

/// Asks the application without windows to end as soon as it has nothing under way. False where none runs that
/// would, or none that answers within a second.
bool askToHandOver(std::filesystem::path const& socket);

}
