#include <Tavaro/Studio/Editor/EditorView.h>

#include <Tavaro/Studio/Lists/FieldVariant.h>

#include <TavaroCore/Values/Timecode.h>

#include <algorithm>
#include <cmath>
#include <unordered_set>
#include <utility>

namespace tavaro {

namespace {

QStringList toTexts(std::vector<std::string> const& lines) {
    QStringList texts;
    for (auto const& line : lines) texts.push_back(toQString(line));
    return texts;
}

}

EditorView::EditorView(std::shared_ptr<OpenProject> project)
    : project_(std::move(project))
    , view_(project_->editorState())
    , place_(placeAt(document().timeline, std::clamp(view_.playhead, 0.0, duration())))
    , selection_(view_.selection) {
    dropWhatIsGone();
}

bool EditorView::holdToDocument() {
    auto const before = place_.time;
    place_ = placeAt(document().timeline, timeOf(document().timeline, place_));
    dropWhatIsGone();
    if (range_.end() > duration()) setRange(range_.start, std::max(duration() - range_.start, 0.0));
    return place_.time != before;
}

// The playhead

void EditorView::setPlayhead(double time) {
    auto const held = std::isfinite(time) ? std::clamp(time, 0.0, duration()) : 0;
    if (held == place_.time) return;
    place_ = placeAt(document().timeline, held);
    Q_EMIT playheadChanged();
}

void EditorView::step(int frames) {
    setPlayhead(Timecode::stepped(playhead(), frames, document().exportSettings.editingRate(), duration()));
}

void EditorView::jump(bool forward) {
    auto target = forward ? duration() : 0;
    auto const consider = [&](double time) {
        if (forward ? time > playhead() && time < target : time < playhead() && time > target) target = time;
    };
    forEachItem(document(), [&](auto const& item) {
        auto const place = placeOf(item);
        if (!place) return;
        consider(place->start);
        consider(place->end());
    });
    for (auto const& track : *document().redactions) {
        if (std::ranges::find(selection_, track.id) == selection_.end()) continue;
        for (auto const& keyframe : track.keyframes) {
            if (auto const time = document().timeline.timelineTime(keyframe.t)) consider(*time);
        }
    }
    setPlayhead(target);
}

// The selection

void EditorView::dropWhatIsGone() {
    std::unordered_set<UUID, UUIDHash> there, wanted(selection_.begin(), selection_.end());
    std::array<int, namesOf(ItemKind{}).size()> kinds{};
    if (!wanted.empty()) {
        forEachItem(document(), [&](auto const& item) {
            if (wanted.contains(item.id) && there.insert(item.id).second)
                ++kinds[static_cast<std::size_t>(kindOf(item))];
        });
    }
    selectedKinds_ = kinds;
    if (std::erase_if(selection_, [&](UUID const& id) { return !there.contains(id); }) > 0) Q_EMIT selectionChanged();
}

QStringList EditorView::selectedIdentities() const {
    QStringList identities;
    for (auto const& id : selection_) identities.push_back(toQString(id.text()));
    return identities;
}

bool EditorView::isSelected(QString const& identity) const {
    auto const id = UUID::parse(identity.toStdString());
    return id && std::ranges::find(selection_, *id) != selection_.end();
}

void EditorView::select(QString const& identity, Select how) {
    if (auto const id = UUID::parse(identity.toStdString())) select(std::vector{*id}, how);
}

void EditorView::select(std::vector<UUID> const& items, Select how) {
    std::unordered_set<UUID, UUIDHash> const before(selection_.begin(), selection_.end());
    auto chosen = how == Select::only ? std::vector<UUID>() : selection_;
    std::unordered_set<UUID, UUIDHash> const given(items.begin(), items.end());
    if (how == Select::toggled) std::erase_if(chosen, [&](UUID const& id) { return given.contains(id); });
    for (auto const& id : items) {
        if (how == Select::only || !before.contains(id)) chosen.push_back(id);
    }
    if (chosen == selection_) return;
    selection_ = std::move(chosen);
    dropWhatIsGone();
    Q_EMIT selectionChanged();
}

void EditorView::selectAll() {
    std::vector<UUID> all;
    forEachItem(document(), [&](auto const& item) {
        if (placeOf(item)) all.push_back(item.id);
    });
    select(all);
}

std::vector<UUID> EditorView::itemsWithin(TimeRange const& range, std::vector<ItemKind> const& kinds) const {
    std::vector<UUID> within;
    forEachItem(document(), [&](auto const& item) {
        if (std::ranges::find(kinds, kindOf(item)) == kinds.end()) return;
        auto const place = placeOf(item);
        bool const isInside =
            place && place->start < range.end() && (place->end() > range.start || place->start == range.start);
        if (isInside) within.push_back(item.id);
    });
    return within;
}

void EditorView::marquee(double start, double duration, QStringList const& kinds, Select how) {
    std::vector<ItemKind> wanted;
    for (auto const& name : kinds) {
        if (auto const kind = enumNamed<ItemKind>(name.toStdString())) wanted.push_back(*kind);
    }
    select(itemsWithin({std::min(start, start + duration), std::abs(duration)}, wanted), how);
}

std::vector<UUID> EditorView::selectedOf(ItemKind kind) const {
    std::unordered_set<UUID, UUIDHash> const selected(selection_.begin(), selection_.end());
    std::vector<UUID> found;
    forEachItem(document(), [&](auto const& item) {
        if (kindOf(item) == kind && selected.contains(item.id)) found.push_back(item.id);
    });
    return found;
}

void EditorView::setRange(double start, double duration) {
    auto const end = this->duration();
    TimeRange held{std::clamp(std::min(start, start + duration), 0.0, end), 0};
    held.duration = std::clamp(std::max(start, start + duration), held.start, end) - held.start;
    if (held == range_) return;
    range_ = held;
    Q_EMIT rangeChanged();
}

// The window's looks

QString EditorView::inspector() const { return toQString(view_.inspector); }
QStringList EditorView::collapsedLanes() const { return toTexts(view_.collapsedLanes); }

void EditorView::setSnaps(bool snaps) {
    view_.snaps = snaps;
    Q_EMIT viewChanged();
}
void EditorView::setTimelineStart(double seconds) {
    view_.timelineStart = seconds;
    Q_EMIT viewChanged();
}
void EditorView::setTimelineScale(double pointsASecond) {
    view_.timelineScale = pointsASecond;
    Q_EMIT viewChanged();
}
void EditorView::setInspector(QString const& name) {
    view_.inspector = name.toStdString();
    Q_EMIT inspectorChanged();
}
void EditorView::setCollapsedLanes(QStringList const& names) {
    view_.collapsedLanes.clear();
    for (auto const& name : names) view_.collapsedLanes.push_back(name.toStdString());
    Q_EMIT viewChanged();
}

void EditorView::keepView() {
    view_.playhead = playhead();
    view_.selection = selection_;
    project_->setEditorState(view_);
}

}
