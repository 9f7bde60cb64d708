#pragma once

#include <TavaroCore/History/ChangedFields.h>
#include <TavaroCore/History/ItemEdit.h>
#include <TavaroCore/History/ProjectDelta.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/FunctionRef.h>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// Edits of one drag, one slider, one stretch of typing: consecutive steps of one name and one group become one step.
struct EditGroup {
    std::uint64_t number = 0; // 0: a step of its own
    bool operator==(EditGroup const&) const = default;
};

/// Who makes the steps of a document.
enum class StepMaker { person, agent, otherProgram };

/// What a step is called, and who made it. Its name for the menus has an agent's in it: "Cut (claude-code)".
struct StepLabel {
    template<std::convertible_to<std::string_view> Name> StepLabel(Name const& name) : name(name) {}
    StepLabel(std::string_view name, StepMaker maker, std::string_view agent = {})
        : name(name)
        , maker(maker)
        , agent(agent) {}

    std::string_view name;
    StepMaker maker = StepMaker::person;
    std::string_view agent; // by its name
};

/// A step as it is listed.
struct ListedStep {
    std::uint64_t number = 0; // names the step for as long as it is there
    std::string name;
    StepMaker maker = StepMaker::person;
    std::string agent;
    bool isUndone = false;
};

/// A document under edit and the way back and forth. Each step has a name for the menus ("Cut", "Polish") and keeps
/// only what its document does not share with the next one, so a cut in an hour's take costs kilobytes.
/// One thread at a time.
class History {
public:
    struct Limits {
        std::size_t steps = 1000;
        std::size_t keptBytes = std::size_t{256} << 20; // of all steps together; the newest step always stays
    };

    explicit History(DemoProject project);
    History(DemoProject project, Limits limits);

    DemoProject const& project() const { return project_; }
    /// Names the present document: equal numbers are equal documents. Undo and redo bring numbers back, so the number
    /// at the last save tells whether there is something to save.
    std::uint64_t revision() const { return revision_; }

    /// One step: runs `change` on the document. A change that throws leaves everything as it was and passes on; one
    /// that changes nothing is no step, and false.
    bool edit(StepLabel const& label, FunctionRef<void(DemoProject&)> change, EditGroup group = {});
    /// The same for an edit that was made elsewhere.
    bool replace(StepLabel const& label, DemoProject project, EditGroup group = {});

    /// The same for an edit of nothing but the inside of some items, each named once; no longer for a longer document.
    bool editItems(StepLabel const& label, std::vector<ItemEdit> edits, EditGroup group = {});

    /// A group that no step has yet.
    EditGroup newGroup() { return {++lastGroup_}; }

    /// False when there is no step to go to.
    bool undo();
    bool redo();
    /// What the last edit, undo or redo changed that changed anything.
    ChangedFields const& lastChange() const { return lastChange_; }
    /// Where the items are that it changed, when it was nothing but the inside of these; else none.
    std::vector<ItemPlace> const& lastItems() const { return lastItems_; }
    /// Name of the step that `undo` takes back, or `redo` brings back.
    std::optional<std::string_view> undoName() const;
    std::optional<std::string_view> redoName() const;
    /// Every step, oldest first; those that are undone come last.
    std::vector<ListedStep> steps() const;

    std::size_t stepCount() const { return undone_.size() + done_.size(); }
    /// Memory that the steps hold beside the present document.
    std::size_t keptBytes() const { return keptBytes_; }

private:
    struct Step {
        std::string name; // for the menus
        StepMaker maker = StepMaker::person;
        std::string agent;
        std::uint64_t number = 0;
        EditGroup group;
        std::uint64_t revision = 0; // of the document that `delta` leads to
        ProjectDelta delta;
        std::vector<ItemEdit> itemsBefore; // of a step of `editItems`, as they were; ascending in each list

        std::size_t bytes() const;
        ListedStep listed(bool isUndone) const;
    };

    bool continues(std::string_view name, EditGroup group) const;
    void clearUndone();
    bool stepped();
    void forget(std::size_t bytes) { keptBytes_ -= bytes; }
    void dropWhatIsTooMuch();
    Step travel(Step step);

    DemoProject project_;
    Limits limits_;
    std::deque<Step> done_;    // oldest first; each leads back
    std::vector<Step> undone_; // next to redo last; each leads forward
    std::uint64_t revision_ = 0;
    std::uint64_t lastRevision_ = 0;
    std::uint64_t lastGroup_ = 0;
    std::uint64_t lastStep_ = 0;
    ChangedFields lastChange_;
    std::vector<ItemPlace> lastItems_;
    bool groupIsOpen_ = false; // nothing but edits happened since the last step
    std::size_t keptBytes_ = 0;
};

}
