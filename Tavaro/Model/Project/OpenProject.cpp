#include <Tavaro/Model/Project/OpenProject.h>

#include <Tavaro/Model/Project/PackagePath.h>
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

SaveOutcome OpenProject::save() {
    expectOwnThread();
    Lock lock;
    lockIfNeeded(lock);
    if (takeInOutside()) return SaveOutcome::changedOutside;
    if (!hasUnsavedChanges()) return SaveOutcome::nothingToSave;
    write(document());
    savedRevision_ = history_.revision();
    notify({.savedState = true});
    return SaveOutcome::saved;
}

/// The step follows the saving, so that one which fails leaves no trace in the history.
StepOutcome OpenProject::commit(StepLabel const& step, FunctionRef<void(DemoProject&)> change) {
    expectOwnThread();
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

/// True when the document changed.
bool OpenProject::takeInOutside() {
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

void OpenProject::stepped() { notify({.fields = history_.lastChange(), .savedState = true}); }

void OpenProject::notify(ProjectChange const& change) {
    for (auto const& each : std::vector(observers_)) {
        if (auto const observer = each.lock()) (*observer)(change);
    }
}

}
