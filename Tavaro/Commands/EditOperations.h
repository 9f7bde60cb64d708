#pragma once

#include <functional>
#include <memory>
#include <string>

namespace CLI {
class App;
}

namespace tavaro {

struct DemoProject;

namespace commands {

struct EditOptions {
    std::string package;
    bool asJSON = false;
};

/// Changes the document and says in one line what was done, without a full stop.
using EditFunction = std::function<std::string(DemoProject&)>;

/// Loads the project, applies the operation, saves what changed, and prints the line with the length before and after.
void runEdit(EditOptions const& options, std::string const& operation, EditFunction const& apply);

using SharedEditOptions = std::shared_ptr<EditOptions>;

/// Declare the operations of `tavaro edit`: trim, cut, speed, split, insert.
void addTimeOperations(CLI::App& edit, SharedEditOptions const& options);
/// mute, volume.
void addSoundOperations(CLI::App& edit, SharedEditOptions const& options);
/// remove-silence, speed-up-typing.
void addCleanUpOperations(CLI::App& edit, SharedEditOptions const& options);
/// tighten-pauses, remove-fillers, delete-words.
void addTranscriptOperations(CLI::App& edit, SharedEditOptions const& options);

}

}
