#include <TavaroCore/History/History.h>

#include <TavaroCore/Records/Private/HeapBytes.h>

#include <algorithm>
#include <iterator>

namespace tavaro {

namespace {

std::string menuName(StepLabel const& label) {
    std::string name(label.name);
    if (!label.agent.empty()) name.append(" (").append(label.agent).append(")");
    return name;
}

bool isBefore(ItemEdit const& a, ItemEdit const& b) {
    return a.item.index() != b.item.index() ? a.item.index() < b.item.index() : a.index < b.index;
}

/// The items as they were before the first of two edits, each in order.
std::vector<ItemEdit> earliest(std::vector<ItemEdit> const& first, std::vector<ItemEdit> const& second) {
    std::vector<ItemEdit> all;
    std::ranges::set_union(first, second, std::back_inserter(all), isBefore); // of both, the first one's
    return all;
}

/// The newest step, which does not lead anywhere yet. `revision` is that of the document before it.
template<class Step> Step& addStep(std::deque<Step>& steps, StepLabel const& label, EditGroup group,
                                   std::uint64_t number, std::uint64_t revision) {
    auto& step = steps.emplace_back();
    step.name = menuName(label);
    step.maker = label.maker;
    step.agent = label.agent;
    step.number = number;
    step.group = group;
    step.revision = revision;
    return step;
}

std::vector<ItemPlace> placesOf(std::vector<ItemEdit> const& edits) {
    std::vector<ItemPlace> places;
    for (auto const& edit : edits) places.push_back(itemPlace(edit));
    return places;
}

}

std::size_t History::Step::bytes() const {
    std::size_t sum = sizeof(Step) + name.capacity() + agent.capacity() + delta.bytes();
    sum += itemsBefore.capacity() * sizeof(ItemEdit);
    for (auto const& edit : itemsBefore) sum += std::visit([](auto const& item) { return heapBytes(item); }, edit.item);
    return sum;
}

History::History(DemoProject project) : History(std::move(project), Limits{}) {}

History::History(DemoProject project, Limits limits) : project_(std::move(project)), limits_(limits) {}

bool History::edit(StepLabel const& label, FunctionRef<void(DemoProject&)> change, EditGroup group) {
    DemoProject after = project_;
    change(after);
    return replace(label, std::move(after), group);
}

bool History::replace(StepLabel const& label, DemoProject project, EditGroup group) {
    auto back = ProjectDelta::between(project, project_);
    if (back.isEmpty()) return false;
    lastChange_ = back.changedFields();
    lastItems_.clear();
    clearUndone();
    if (continues(menuName(label), group)) {
        // The step then leads from here to where the whole group began.
        auto step = std::move(done_.back());
        done_.pop_back();
        forget(step.bytes());
        step.delta.apply(project_);
        step.delta = ProjectDelta::between(project, project_);
        step.itemsBefore.clear();
        if (step.delta.isEmpty()) { // dragged back to where it was
            revision_ = step.revision;
            return true;
        }
        done_.push_back(std::move(step));
    } else {
        addStep(done_, label, group, ++lastStep_, revision_).delta = std::move(back);
    }
    project_ = std::move(project);
    return stepped();
}

bool History::editItems(StepLabel const& label, std::vector<ItemEdit> edits, EditGroup group) {
    bool const goesOn = continues(menuName(label), group);
    if (goesOn && done_.back().itemsBefore.empty()) {
        auto const change = [&](DemoProject& project) {
            for (auto const& each : edits) putItem(project, each);
        };
        return edit(label, change, group);
    }
    std::vector<ItemEdit> before;
    for (auto const& each : edits) before.push_back(presentItem(project_, each));
    std::ranges::sort(before, isBefore);
    std::ranges::sort(edits, isBefore);
    auto const change = ProjectDelta::between(project_, edits);
    if (change.isEmpty()) return false;
    lastChange_ = change.changedFields();
    lastItems_ = placesOf(edits);
    clearUndone();
    for (auto const& each : edits) putItem(project_, each);
    if (goesOn) {
        forget(done_.back().bytes());
        done_.back().itemsBefore = earliest(done_.back().itemsBefore, before);
    } else {
        addStep(done_, label, group, ++lastStep_, revision_).itemsBefore = std::move(before);
    }
    auto& step = done_.back();
    step.delta = ProjectDelta::between(project_, step.itemsBefore);
    if (step.delta.isEmpty()) { // dragged back to where it was
        revision_ = step.revision;
        done_.pop_back();
        return true;
    }
    return stepped();
}

/// There is a new step.
bool History::stepped() {
    keptBytes_ += done_.back().bytes();
    revision_ = ++lastRevision_;
    groupIsOpen_ = true;
    dropWhatIsTooMuch();
    return true;
}

void History::clearUndone() {
    for (auto const& step : undone_) forget(step.bytes());
    undone_.clear();
}

bool History::continues(std::string_view name, EditGroup group) const {
    return groupIsOpen_ && group.number != 0 && !done_.empty() && done_.back().group == group &&
           done_.back().name == name;
}

void History::dropWhatIsTooMuch() {
    while (done_.size() > 1 && (done_.size() > limits_.steps || keptBytes_ > limits_.keptBytes)) {
        forget(done_.front().bytes());
        done_.pop_front();
    }
}

/// Goes where the step leads; what comes back is the step that leads here again.
History::Step History::travel(Step step) {
    forget(step.bytes());
    lastChange_ = step.delta.changedFields();
    lastItems_ = placesOf(step.itemsBefore);
    step.delta = step.delta.apply(project_);
    std::swap(step.revision, revision_);
    groupIsOpen_ = false;
    keptBytes_ += step.bytes();
    return step;
}

bool History::undo() {
    if (done_.empty()) return false;
    auto step = std::move(done_.back());
    done_.pop_back();
    undone_.push_back(travel(std::move(step)));
    return true;
}

bool History::redo() {
    if (undone_.empty()) return false;
    auto step = std::move(undone_.back());
    undone_.pop_back();
    done_.push_back(travel(std::move(step)));
    return true;
}

std::optional<std::string_view> History::undoName() const {
    if (done_.empty()) return std::nullopt;
    return done_.back().name;
}

std::optional<std::string_view> History::redoName() const {
    if (undone_.empty()) return std::nullopt;
    return undone_.back().name;
}

ListedStep History::Step::listed(bool isUndone) const {
    auto const suffix = agent.empty() ? 0 : agent.size() + 3; // " (…)"
    return {number, name.substr(0, name.size() - suffix), maker, agent, isUndone};
}

std::vector<ListedStep> History::steps() const {
    std::vector<ListedStep> steps;
    steps.reserve(stepCount());
    for (auto const& step : done_) steps.push_back(step.listed(false));
    for (auto step = undone_.rbegin(); step != undone_.rend(); ++step) steps.push_back(step->listed(true));
    return steps;
}

}
