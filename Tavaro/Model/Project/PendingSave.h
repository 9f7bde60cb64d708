#pragma once

#include <Tavaro/Model/Jobs/Outcome.h>

#include <TavaroCore/Package/EditorState.h>
#include <TavaroCore/Package/FileStamp.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <cstdint>
#include <mutex>
#include <optional>

namespace tavaro {

/// What a save found and left on the disk.
struct WrittenDocument {
    bool isChangedOutside = false; // another program had saved, and nothing was written
    std::optional<SavedDocument> saved;
    std::optional<FileStamp> stamp; // of the document's file
    Date modifiedAt;
};

/// The document of an open project on its way to the disk: a copy of it, and what it takes to write that on a thread
/// that may wait. `OpenProject::beginSave` makes it, `finishSave` takes in what came of it.
class PendingSave {
public:
    struct Parts {
        ProjectPackage package;
        DemoProject document;
        std::uint64_t revision = 0;
        std::optional<FileStamp> stamp; // that the file must have, or another program saved
        std::optional<SavedDocument> before;
        bool isDamaged = false;           // what is on the disk is kept aside
        bool locks = true;                // false: the project's lock is held already
        bool waitsForLock = false;        // false: `ProjectInUse` where another has it
        std::optional<EditorState> state; // to be written too
    };

    explicit PendingSave(Parts parts) : parts_(std::move(parts)) {}

    /// Writes it, once: who comes second waits for the first. Any thread.
    void run();

    // What came of it; after `run`.

    std::uint64_t revision() const { return parts_.revision; }
    Outcome<WrittenDocument> const& written() const { return *written_; }
    /// Null where the editor's state was written, or was not to be.
    std::exception_ptr const& stateFailure() const { return stateFailure_; }
    std::optional<EditorState> const& state() const { return parts_.state; }
    /// Moves the document out, as it was when it was made.
    DemoProject takeDocument();

private:
    std::optional<FolderLock> lock() const;
    WrittenDocument write();
    void writeState();

    Parts parts_;
    Date modifiedBefore_;
    std::once_flag once_;
    std::optional<Outcome<WrittenDocument>> written_;
    std::exception_ptr stateFailure_;
};

}
