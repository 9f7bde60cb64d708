#include <Tavaro/Studio/Privacy/FindingList.h>

#include <Tavaro/Model/Operations/FindingOperations.h>
#include <Tavaro/Model/Privacy/KeptScan.h>
#include <Tavaro/Studio/Editor/EditorSession.h>
#include <Tavaro/Studio/Lists/FieldVariant.h>

#include <TavaroCore/Privacy/SensitiveTextClassifier.h>
#include <TavaroCore/Project/RecordingOfProject.h>
#include <TavaroCore/Records/Hash.h>
#include <TavaroCore/Values/Timecode.h>

#include <algorithm>
#include <array>
#include <map>
#include <string_view>
#include <tuple>

namespace tavaro {

namespace {

enum Role { isHeading, group, identity, title, span, isHidden, isByHand, count, hiddenCount, isFolded };
constexpr std::array<char const*, 10> roleTexts{"isHeading", "group",    "identity", "title",       "span",
                                                "isHidden",  "isByHand", "count",    "hiddenCount", "isFolded"};

constexpr int byHand = static_cast<int>(namesOf(SensitiveKind{}).size());
constexpr std::size_t groups = byHand + 1;

int groupOf(RedactionTrack const& track) { return isFinding(track) ? static_cast<int>(track.kind) : byHand; }

QString titleOfGroup(int group) {
    return group == byHand ? FindingList::tr("Hidden by hand")
                           : toQString(displayName(static_cast<SensitiveKind>(group)));
}

QString clock(double seconds) { return toQString(Timecode::format(seconds, Timecode::Fraction::hundredths)); }

/// Where the film shows a stretch of each of its movies.
class Showings {
public:
    explicit Showings(DemoProject const& project) : project_(project), usual_(recordingAsset(project)) {}

    std::vector<RecordingOnTimeline::Stretch> of(RedactionTrack const& track) {
        std::string_view const asset = track.asset ? std::string_view(*track.asset) : usual_;
        auto const& shown = recordings_.try_emplace(asset, project_.timeline, asset).first->second;
        return shown.stretches({track.start, track.duration()});
    }

private:
    DemoProject const& project_;
    std::string_view usual_;
    std::map<std::string_view, RecordingOnTimeline> recordings_;
};

bool concerns(ProjectChange const& change) {
    return std::ranges::any_of(std::array<std::string_view, 4>{"redactions", "timeline", "assetDurations", "metadata"},
                               [&](auto const field) { return change.fields.contains(field); });
}

}

FindingList::FindingList(EditorSession& session) : session_(session) {
    observation_ = session.project().observe([this](ProjectChange const& change) {
        if (concerns(change)) update();
    });
    QObject::connect(&session, &EditorSession::selectionChanged, this, &FindingList::currentChanged);
    update();
}

// Rows

/// In the order of the list, all headings that have anything under them included.
std::vector<FindingPlace> FindingList::ordered() {
    auto const& project = session_.document();
    auto const& tracks = *project.redactions;
    shown_.clear();
    counts_.assign(groups, {});
    Showings showings(project);
    std::vector<std::tuple<int, bool, double, std::size_t>> order;
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        auto const& track = tracks[i];
        auto const group = groupOf(track);
        auto const stretches = showings.of(track);
        auto& shown = shown_[track.id] = {i, {}, 0};
        if (!stretches.empty()) shown = {i, stretches.front().range, stretches.back().range.end()};
        auto& counts = counts_[static_cast<std::size_t>(group)];
        ++counts.all;
        counts.hidden += track.isEnabled;
        order.emplace_back(group, !track.isEnabled, track.start, i);
    }
    std::ranges::sort(order);
    std::vector<FindingPlace> places;
    for (auto const& [group, isRejected, start, index] : order) {
        if (places.empty() || places.back().group != group) places.push_back({group, std::nullopt});
        places.push_back({group, tracks[index].id});
    }
    return places;
}

void FindingList::addRow(std::vector<Row>& rows, FindingPlace const& place) const {
    std::size_t content = 0;
    auto const mix = [&](auto const& value) { detail::mixHash(content, value); };
    if (auto const* shown = track(place)) {
        mix(hashOf(shown->label)), mix(hashOf(shown->isEnabled)), mix(qHash(spanOf(place)));
        mix(hashOf(shown->keyframes.size())); // the picture
    } else {
        auto const& counts = counts_[static_cast<std::size_t>(place.group)];
        mix(hashOf(counts.all)), mix(hashOf(counts.hidden)), mix(hashOf(folded_.contains(place.group)));
    }
    rows.push_back({place, content});
}

void FindingList::update() {
    std::vector<Row> rows;
    for (auto const& place : ordered())
        if (!place.id || !folded_.contains(place.group)) addRow(rows, place);
    showRows(rows);
    findings_ = hidden_ = 0;
    for (int group = 0; group < byHand; ++group) {
        findings_ += counts_[static_cast<std::size_t>(group)].all;
        hidden_ += counts_[static_cast<std::size_t>(group)].hidden;
    }
    Q_EMIT countsChanged();
    Q_EMIT currentChanged();
}

RedactionTrack const* FindingList::track(FindingPlace const& place) const {
    auto const& tracks = *session_.document().redactions;
    auto const found = place.id ? shown_.find(*place.id) : shown_.end();
    bool const isThere = found != shown_.end() && found->second.index < tracks.size();
    return isThere && tracks[found->second.index].id == *place.id ? &tracks[found->second.index] : nullptr;
}

QString FindingList::spanOf(FindingPlace const& place) const {
    auto const found = shown_.find(*place.id);
    if (found == shown_.end() || found->second.end <= 0) return {};
    return QStringLiteral("%1 – %2").arg(clock(found->second.span.start), clock(found->second.end));
}

int FindingList::current() const {
    for (auto const& id : session_.selection()) {
        auto const* selected = track({0, id});
        auto const row = selected ? rowOf({groupOf(*selected), id}) : std::nullopt;
        if (row) return *row;
    }
    return -1;
}

QHash<int, QByteArray> FindingList::roleNames() const {
    QHash<int, QByteArray> names;
    for (std::size_t i = 0; i < roleTexts.size(); ++i) names.insert(firstRole + static_cast<int>(i), roleTexts[i]);
    return names;
}

QVariant FindingList::data(QModelIndex const& index, int role) const {
    if (!index.isValid()) return {};
    auto const& place = key(index.row());
    auto const wanted = role == Qt::DisplayRole ? Role::title : role - firstRole;
    switch (wanted) {
    case Role::isHeading: return !place.id.has_value();
    case Role::group: return titleOfGroup(place.group);
    case Role::isByHand: return place.group == byHand;
    default: return place.id ? findingData(place, wanted) : headingData(place, wanted);
    }
}

QVariant FindingList::headingData(FindingPlace const& place, int role) const {
    auto const& counts = counts_[static_cast<std::size_t>(place.group)];
    switch (role) {
    case Role::title: return titleOfGroup(place.group);
    case Role::isHidden: return counts.hidden == counts.all;
    case Role::count: return counts.all;
    case Role::hiddenCount: return counts.hidden;
    case Role::isFolded: return folded_.contains(place.group);
    case Role::identity:
    case Role::span: return QString();
    default: return {};
    }
}

QVariant FindingList::findingData(FindingPlace const& place, int role) const {
    auto const* shown = track(place);
    switch (role) {
    case Role::title: return shown ? toQString(shown->label) : QString();
    case Role::identity: return toVariant(*place.id);
    case Role::span: return spanOf(place);
    case Role::isHidden: return shown && shown->isEnabled;
    case Role::count:
    case Role::hiddenCount: return 0;
    case Role::isFolded: return false;
    default: return {};
    }
}

// What is done to them

void FindingList::show(int row) {
    if (row < 0 || row >= rowCount()) return;
    auto const place = key(row);
    if (!place.id) return fold(row);
    auto const found = shown_.find(*place.id);
    session_.select(std::vector{*place.id});
    if (found != shown_.end() && found->second.end > 0) session_.setPlayhead(found->second.span.start);
}

void FindingList::fold(int row) {
    if (row < 0 || row >= rowCount()) return;
    auto const group = key(row).group;
    if (!folded_.erase(group)) folded_.insert(group);
    update();
}

bool FindingList::setHidden(int row, bool isHidden) {
    if (row < 0 || row >= rowCount() || data(index(row), firstRole + Role::isHidden).toBool() == isHidden) return false;
    auto const place = key(row);
    if (place.group == byHand) return showByHand(place, !isHidden);
    std::vector<std::string> names{place.id ? place.id->text()
                                            : std::string(nameOf(static_cast<SensitiveKind>(place.group)))};
    return isHidden ? session_.perform(operations::AcceptFindings{std::move(names)})
                    : session_.perform(operations::RejectFindings{std::move(names)});
}

bool FindingList::toggle(int row) {
    return row >= 0 && row < rowCount() && setHidden(row, !data(index(row), firstRole + Role::isHidden).toBool());
}

bool FindingList::reject(int row) {
    if (row < 0 || row >= rowCount()) return false;
    auto const place = key(row);
    if (place.group != byHand) return setHidden(row, false);
    if (!place.id) return false; // all that somebody made is too much for one key
    return session_.edit("Delete Hidden Area", [&](DemoProject& project) {
        std::erase_if(project.redactions.edit(), [&](auto const& track) { return track.id == *place.id; });
    });
}

bool FindingList::showByHand(FindingPlace const& place, bool isShown) {
    return session_.edit(isShown ? "Show Area" : "Hide Area", [&](DemoProject& project) {
        for (auto& track : project.redactions.edit())
            if (place.id ? track.id == *place.id : groupOf(track) == byHand) track.isEnabled = !isShown;
    });
}

}
