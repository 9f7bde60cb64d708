#include <Tavaro/Model/Project/OpenProject.h>

#include <Tavaro/Model/Project/PackagePath.h>
#include <Tavaro/Model/Project/PendingSave.h>
#include <Tavaro/Model/Project/ProjectInUse.h>
#include <Tavaro/Model/Project/StoredProject.h>

#include <TavaroCore/Files/FileError.h>

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <cassert>
#include <utility>

namespace tavaro {

namespace {

/// The document with the stamp of the very file that was read: who else saves without the lock, or removes typed text
/// while loading, makes for another try.
ReadProject readDocument(ProjectPackage const& package) {
    constexpr int mostTries = 5;
    for (int tries = 1;; ++tries) {
        auto const stamp = stampOf(package.projectFileURL());
        auto project = loadDocument(package);
        if (tries == mostTries || stamp == stampOf(package.projectFileURL()))
            return {package, std::move(project), stamp};
    }
}

}

ReadProject readProject(std::filesystem::path const& given) { return readDocument(ProjectPackage(packagePath(given))); }

OpenProject::OpenProject(std::filesystem::path const& given, LockHolding holding)
    : OpenProject(ProjectPackage(packagePath(given)), holding) {}

OpenProject::OpenProject(ProjectPackage package, LockHolding holding)
    : package_(std::move(package))
    , history_(DemoProject{}) {
    if (holding == LockHolding::whileOpen) {
        lock_.emplace(package_.lockForEditing());
        package_.removeTypedText();
    }
    show(readDocument(package_));
}

OpenProject::OpenProject(ReadProject read)
    : package_(read.package)
    , waiting_(LockWaiting::never)
    , history_(DemoProject{}) {
    show(std::move(read));
}

void OpenProject::show(ReadProject read) {
    stamp_ = read.stamp;
    savedAt_ = read.project.modifiedAt;
    stored_ = read.project;
    history_ = History(std::move(read.project));
    savedRevision_ = history_.revision();
}

OpenProject::~OpenProject() {
    if (pending_) pending_->run();
    try {
        saveEditorState();
    } catch (std::exception const& error) {
        spdlog::debug("The editor's state is not kept: {}", error.what());
    }
}

void OpenProject::expectOwnThread() const { assert(thread_ == std::this_thread::get_id()); }

void OpenProject::lockIfNeeded(Lock& lock) const {
    if (lock_) return;
    if (waiting_ == LockWaiting::asLongAsItTakes) {
        lock.emplace(package_.lockForEditing());
    } else {
        lock = package_.lockForEditingUnlessTaken();
        if (!lock) throw ProjectInUse(package_.url());
    }
}

StepOutcome OpenProject::edit(StepLabel const& step, FunctionRef<void(DemoProject&)> change, EditGroup group) {
    expectOwnThread();
    takeInOutside();
    StepOutcome outcome{.durationBefore = document().duration()};
    outcome.isChanged = history_.edit(step, change, group);
    outcome.duration = document().duration();
    if (outcome.isChanged) stepped();
    return outcome;
}

StepOutcome OpenProject::editItems(StepLabel const& step, std::vector<ItemEdit> edits, EditGroup group) {
    expectOwnThread();
    auto const duration = document().duration(); // which items do not change
    StepOutcome const outcome{.isChanged = history_.editItems(step, std::move(edits), group),
                              .durationBefore = duration,
                              .duration = duration};
    if (outcome.isChanged) stepped();
    return outcome;
}

SaveOutcome OpenProject::save() {
    expectOwnThread();
    awaitSave();
    Lock lock;
    lockIfNeeded(lock);
    if (takeInOutside()) return SaveOutcome::changedOutside;
    if (!hasUnsavedChanges()) return SaveOutcome::nothingToSave;
    write(document());
    savedRevision_ = history_.revision();
    notify({.savedState = true});
    return SaveOutcome::saved;
}

std::shared_ptr<PendingSave> OpenProject::beginSave() {
    expectOwnThread();
    if (pending_ || !hasUnsavedChanges()) return nullptr;
    pending_ =
        std::make_shared<PendingSave>(PendingSave::Parts{.package = package_,
                                                         .document = document(),
                                                         .revision = history_.revision(),
                                                         .stamp = stamp_,
                                                         .before = saved_,
                                                         .isDamaged = isDamaged_,
                                                         .locks = !lock_,
                                                         .waitsForLock = waiting_ == LockWaiting::asLongAsItTakes,
                                                         .state = isEditorStateChanged_ ? editorState_ : std::nullopt});
    return pending_;
}

SaveOutcome OpenProject::finishSave(std::shared_ptr<PendingSave> const& save) {
    expectOwnThread();
    if (!save || pending_ != save) return SaveOutcome::nothingToSave; // somebody had to wait for it
    pending_.reset();
    save->run();
    if (save->written().value().isChangedOutside) return takeInOutside() ? SaveOutcome::changedOutside : this->save();
    wrote(*save);
    if (save->stateFailure()) std::rethrow_exception(save->stateFailure());
    return SaveOutcome::saved;
}

void OpenProject::wrote(PendingSave& save) {
    auto const& written = save.written().value();
    if (written.saved) saved_ = written.saved;
    isDamaged_ = false;
    stamp_ = written.stamp;
    savedAt_ = written.modifiedAt;
    stored_ = save.takeDocument();
    savedRevision_ = save.revision();
    if (!save.stateFailure() && save.state() == editorState_) isEditorStateChanged_ = false;
    notify({.savedState = true});
}

/// Who needs the lock or the file waits for what writes it beside. Where that failed, it is they who try again.
void OpenProject::awaitSave() {
    try {
        finishSave(std::shared_ptr(pending_));
    } catch (FileError const& error) {
        spdlog::debug("The save beside is made again: {}", error.what());
    }
}

/// The step follows the saving, so that one which fails leaves no trace in the history.
StepOutcome OpenProject::commit(StepLabel const& step, FunctionRef<void(DemoProject&)> change) {
    expectOwnThread();
    awaitSave();
    Lock lock;
    lockIfNeeded(lock);
    takeInOutside();
    auto after = document();
    change(after);
    StepOutcome outcome{.durationBefore = document().duration(), .duration = after.duration()};
    if (!hasUnsavedChanges() && after == document()) return outcome;
    write(after);
    outcome.isChanged = history_.replace(step, std::move(after));
    savedRevision_ = history_.revision();
    notify({.fields = outcome.isChanged ? history_.lastChange() : ChangedFields{}, .savedState = true});
    return outcome;
}

bool OpenProject::undo() {
    expectOwnThread();
    if (!history_.undo()) return false;
    stepped();
    return true;
}

bool OpenProject::redo() {
    expectOwnThread();
    if (!history_.redo()) return false;
    stepped();
    return true;
}

bool OpenProject::refresh() {
    expectOwnThread();
    return takeInOutside();
}

/// True when the document changed. The file of a save under way is no other program's.
bool OpenProject::takeInOutside() {
    if (pending_) return false;
    auto const found = stampOf(package_.projectFileURL());
    if (found == stamp_) return false;
    auto const revision = history_.revision();
    try {
        auto read = readDocument(package_);
        stamp_ = read.stamp;
        takeIn(std::move(read.project));
    } catch (FileError const& error) {
        stamp_ = found; // told of once
        giveUpDisk(error.what());
    }
    return history_.revision() != revision;
}

void OpenProject::takeIn(DemoProject project) {
    isDamaged_ = false;
    savedAt_ = std::exchange(project.modifiedAt, document().modifiedAt);
    if (savedRevision_ && project == stored_) return notify({.savedState = true}); // the same, written again
    stored_ = project;
    bool const isChanged = history_.replace({"Changed Outside", StepMaker::otherProgram}, std::move(project));
    savedRevision_ = history_.revision();
    notify(
        {.fields = isChanged ? history_.lastChange() : ChangedFields{}, .savedState = true, .fromOutside = isChanged});
}

void OpenProject::giveUpDisk(std::string const& problem) {
    isDamaged_ = stamp_.has_value();
    savedRevision_.reset();
    notify({.savedState = true,
            .problem = fmt::format("{} What is open here is kept, and saving writes it again.", problem)});
}

/// Under the lock, with what others saved taken in.
void OpenProject::write(DemoProject project) {
    auto const modifiedAt = std::exchange(project.modifiedAt, Date::now());
    if (isDamaged_)
        package_.saveOverDamaged(project);
    else
        saved_ = package_.save(project, saved_);
    isDamaged_ = false;
    stamp_ = stampOf(package_.projectFileURL());
    savedAt_ = std::exchange(project.modifiedAt, modifiedAt);
    stored_ = std::move(project);
}

EditorState const& OpenProject::editorState() {
    expectOwnThread();
    if (!editorState_) editorState_ = package_.loadEditorState();
    return *editorState_;
}

void OpenProject::setEditorState(EditorState state) {
    if (state == editorState()) return;
    editorState_ = std::move(state);
    isEditorStateChanged_ = true;
}

void OpenProject::saveEditorState() {
    if (!isEditorStateChanged_) return;
    package_.saveEditorState(*editorState_);
    isEditorStateChanged_ = false;
}

OpenProject::Observation OpenProject::observe(Observer observer) {
    auto observation = std::make_shared<Observer const>(std::move(observer));
    std::erase_if(observers_, [](auto const& each) { return each.expired(); });
    observers_.push_back(observation);
    return observation;
}

void OpenProject::stepped() {
    notify({.fields = history_.lastChange(), .items = history_.lastItems(), .savedState = true});
}

void OpenProject::notify(ProjectChange change) {
    auto const revision = history_.revision();
    for (auto const& each : std::vector(observers_)) {
        if (history_.revision() != revision) change.items.clear(); // an observer edited: they may be elsewhere
        if (auto const observer = each.lock()) (*observer)(change);
    }
}

}
