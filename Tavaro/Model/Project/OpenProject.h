#pragma once

#include <TavaroCore/Files/FolderLock.h>
#include <TavaroCore/History/ChangedFields.h>
#include <TavaroCore/History/History.h>
#include <TavaroCore/Package/EditorState.h>
#include <TavaroCore/Package/FileStamp.h>
#include <TavaroCore/Package/ProjectPackage.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace tavaro {

class PendingSave;

/// When an open project holds the lock that edits by several processes wait for.
enum class LockHolding {
    /// From opening to closing, for a command: it opens, makes its edit, saves and ends, and waits for nobody between.
    whileOpen,
    /// While it saves, for an application, which has projects open for hours.
    whileSaving,
};

/// What a step came to.
struct StepOutcome {
    bool isChanged = false;    // false: the step changed nothing, and there is none
    double durationBefore = 0; // output seconds
    double duration = 0;
};

enum class SaveOutcome {
    saved,
    nothingToSave,
    /// Another program had saved meanwhile. Its document is the present one now; what was not saved here is one undo
    /// away, and can be saved from there.
    changedOutside,
};

/// What happened to an open project; sent after it happened.
struct ProjectChange {
    ChangedFields fields;               // of the document; none when only the other parts below changed
    std::vector<ItemPlace> items;       // when nothing but the inside of these changed: they are where they were
    bool savedState = false;            // whether there is something to save may have changed
    bool fromOutside = false;           // the document is what another program saved
    std::optional<std::string> problem; // of a document that another program damaged or removed, as a sentence
};

/// A document with the stamp of the very file that it was read from.
struct ReadProject {
    ProjectPackage package;
    DemoProject project;
    std::optional<FileStamp> stamp;
};

/// For who opens a project from a thread that must not wait for it: reads "NAME.recproj" on any thread, with the
/// failures of opening.
ReadProject readProject(std::filesystem::path const& given);

/// A project under edit: its package, its document with the way back and forth, and what of that is on the disk.
/// It belongs to one thread, the one that opened it: the main queue's in a program that has one.
///
/// Several programs may have a project open. The rules between them:
/// - Who saves holds the project's lock (`ProjectPackage::lockForEditing`), as `LockHolding` says. Nobody holds it
/// while
///   something is drawn, decoded, recorded or exported, or while a person thinks.
/// - A document that another program saved is noticed before every edit and save here and by `refresh`, which an
///   application calls now and then. It becomes the present document as one step ("Changed Outside"), so that undo
///   leads to the document before with everything unsaved in it, and a save from there is the last word. A file that
///   only was written again, with the same document, changes nothing here.
/// - An edit that must be on the disk when it is answered for is made by `commit`: under one lock it takes in what
///   others saved, makes the change on that, and saves.
/// - A document that was damaged or removed outside changes nothing here; it is told of once, there is then something
///   to save, and the next save writes the document again. Damaged bytes are kept as "project.damaged.json".
///
/// `modifiedAt` belongs to the file: a save that changes the document sets it there (`savedAt`). In the document it
/// stays what it was on opening, so that undo gives the document before to the last byte.
class OpenProject {
public:
    /// Opens "NAME.recproj"; the ending may be missing. With `whileOpen` it waits for the lock first. Throws
    /// `FileError` with the project's name in the sentence.
    explicit OpenProject(std::filesystem::path const& given, LockHolding holding = LockHolding::whileSaving);
    /// As `whileSaving`, for a thread that must not wait: where another has the lock, `save` and `commit` throw
    /// `ProjectInUse`. What others saved since it was read is taken in by the first edit, as later too.
    explicit OpenProject(ReadProject read);
    /// Keeps the editor's state; unsaved changes of the document are dropped.
    ~OpenProject();
    OpenProject(OpenProject const&) = delete;
    OpenProject& operator=(OpenProject const&) = delete;

    ProjectPackage const& package() const { return package_; }
    DemoProject const& document() const { return history_.project(); }
    /// Equal numbers are equal documents.
    std::uint64_t revision() const { return history_.revision(); }
    bool hasUnsavedChanges() const { return savedRevision_ != history_.revision(); }
    /// When the document on the disk last changed.
    Date savedAt() const { return savedAt_; }

    /// One step of the document's history, named for the menus. What others saved is taken in first. A change that
    /// throws leaves everything as it was; edits of one group become one step.
    StepOutcome edit(StepLabel const& step, FunctionRef<void(DemoProject&)> change, EditGroup group = {});
    /// A step that changes nothing but the inside of some items, each named once. It costs by those, not by the length
    /// of the film. They are named by their places in the present document, so who asks has called `refresh` before.
    StepOutcome editItems(StepLabel const& step, std::vector<ItemEdit> edits, EditGroup group = {});
    EditGroup newGroup() { return history_.newGroup(); }
    /// Writes the document when there is something to save. Throws `FileError`, and then nothing has changed.
    SaveOutcome save();
    /// `save` in two halves, for a thread that must not wait for the disk: what there is to write, with the editor's
    /// state, to be run on any other thread. Null when there is nothing to save, or it is under way. Until it is
    /// finished, nothing of what others save is taken in; who edits, saves or commits meanwhile may do so.
    std::shared_ptr<PendingSave> beginSave();
    /// Takes in what came of it, after it was run; as `save`, with its failures.
    SaveOutcome finishSave(std::shared_ptr<PendingSave> const& save);
    /// `edit` and `save` in one, under one lock: when it returns, the change is on the disk. When it throws, because
    /// the change was refused or could not be saved, document and history are without it.
    StepOutcome commit(StepLabel const& step, FunctionRef<void(DemoProject&)> change);

    /// False when there is no step to go to.
    bool undo();
    bool redo();
    std::optional<std::string_view> undoName() const { return history_.undoName(); }
    std::optional<std::string_view> redoName() const { return history_.redoName(); }
    /// Every step, oldest first; those that are undone come last.
    std::vector<ListedStep> steps() const { return history_.steps(); }

    /// Looks whether another program saved. True when the document changed. Cheap when nothing did (one `stat`).
    bool refresh();

    /// What the editor's window looked like; read when it is first asked for, kept when the project closes.
    EditorState const& editorState();
    void setEditorState(EditorState state);
    /// Writes it now, when it changed. Throws `FileError`.
    void saveEditorState();

    using Observer = std::function<void(ProjectChange const&)>;
    using Observation = std::shared_ptr<Observer const>;
    /// The observer is told of every change for as long as the observation lives. It may edit in its turn.
    [[nodiscard]] Observation observe(Observer observer);

private:
    using Lock = std::optional<FolderLock>;
    enum class LockWaiting { asLongAsItTakes, never };

    OpenProject(ProjectPackage package, LockHolding holding);
    void show(ReadProject read);
    void expectOwnThread() const;
    void lockIfNeeded(Lock& lock) const;
    bool takeInOutside();
    void takeIn(DemoProject project);
    void giveUpDisk(std::string const& problem);
    void write(DemoProject project);
    void wrote(PendingSave& save);
    void awaitSave();
    void stepped();
    void notify(ProjectChange change);

    std::thread::id thread_ = std::this_thread::get_id();
    ProjectPackage package_;
    LockWaiting waiting_ = LockWaiting::asLongAsItTakes;
    Lock lock_;                          // held while open
    std::optional<FileStamp> stamp_;     // of the document's file as it was last read or written
    std::optional<SavedDocument> saved_; // the last one from here
    DemoProject stored_;                 // the document on the disk, but for its date
    History history_;
    std::optional<std::uint64_t> savedRevision_; // on the disk; none when nothing good is
    bool isDamaged_ = false;                     // what is on the disk cannot be read
    Date savedAt_;
    std::shared_ptr<PendingSave> pending_;
    std::optional<EditorState> editorState_;
    bool isEditorStateChanged_ = false;
    std::vector<std::weak_ptr<Observer const>> observers_;
};

}
