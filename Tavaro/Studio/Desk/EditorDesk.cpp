#include <Tavaro/Studio/Desk/EditorDesk.h>

#include <Tavaro/Studio/Privacy/PrivacyDesk.h>
#include <Tavaro/Studio/Voice/VoiceDesk.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Values/Timecode.h>

#include <QScopedValueRollback>

#include <set>
#include <string>
#include <utility>
#include <variant>

namespace tavaro {

namespace {

std::set<std::string> keys(QStringList const& names) {
    std::set<std::string> result;
    for (auto const& name : names) result.insert(name.toStdString());
    return result;
}

}

EditorDesk::EditorDesk(MainQueue& queue, std::shared_ptr<OpenProject> const& project)
    : queue_(queue)
    , session_(queue, project)
    , preview_(*project)
    , looks_(queue, session_)
    , steps_(*project) {
    join();
}

EditorDesk::EditorDesk(MainQueue& queue, std::shared_ptr<OpenProject> const& project, FilmPlayback::Means means)
    : queue_(queue)
    , session_(queue, project)
    , preview_(*project, std::move(means))
    , looks_(queue, session_)
    , steps_(*project) {
    join();
}

EditorDesk::~EditorDesk() { showIn(nullptr); }

void EditorDesk::join() {
    observation_ = session_.project().observe([this](ProjectChange const& change) { follow(change); });
    auto* const playback = preview_.playback();
    connect(playback, &FilmPlayback::positionChanged, this, &EditorDesk::followPlayback);
    connect(playback, &FilmPlayback::durationChanged, this, &EditorDesk::timeChanged);
    connect(playback, &FilmPlayback::playingChanged, this, [this, playback] {
        if (timeline_) timeline_->setPlaying(playback->isPlaying());
    });
    connect(&session_, &EditorSession::playheadChanged, this, &EditorDesk::followPlayhead);
    connect(&session_, &EditorSession::selectionChanged, this, &EditorDesk::followSelection);
    connect(&session_, &EditorSession::viewChanged, this, &EditorDesk::followLanes);
    connect(&session_, &EditorSession::rangeChanged, this, &EditorDesk::followRange);
    followPlayhead();
}

QObject* EditorDesk::voice() {
    if (!voice_)
        voice_ =
            std::make_unique<VoiceDesk>(queue_, session_, voiceMeans_ ? *voiceMeans_ : VoiceMeans::ofThisMachine());
    return voice_.get();
}

QObject* EditorDesk::privacy() {
    if (!privacy_) privacy_ = std::make_unique<PrivacyDesk>(queue_, session_, movieScan_);
    return privacy_.get();
}

QString EditorDesk::time() const {
    auto const& playback = const_cast<FilmPreview&>(preview_).playback();
    return QString::fromStdString(Timecode::format(playback->position()) + " / " +
                                  Timecode::format(playback->duration()));
}

void EditorDesk::showIn(TimelineItem* timeline) {
    if (timeline_) {
        timeline_->disconnect(this);
        timeline_->onIntent({});
        timeline_->showNothing();
    }
    timeline_ = timeline;
    if (!timeline) return;
    auto const package = session_.project().package();
    timeline->setMedia([package](std::string const& asset) { return package.assetURL(asset); });
    timeline->onIntent([this](TimelineIntent const& intent) { take(intent); });
    timeline->setPalette(isDark_ ? TimelinePalette::dark() : TimelinePalette::light());
    timeline->setFrameRate(session_.document().exportSettings.editingRate());
    timeline->setSnaps(session_.snaps());
    timeline->show(session_.document());
    if (session_.timelineScale() > 0) timeline->setView(session_.timelineStart(), 1 / session_.timelineScale());
    timeline->setPlayhead(session_.playhead());
    timeline->setPlaying(preview_.playback()->isPlaying());
    followSelection();
    followLanes();
    followRange();
    connect(timeline, &TimelineItem::viewChanged, this, &EditorDesk::keepView);
}

void EditorDesk::setDark(bool isDark) {
    isDark_ = isDark;
    if (timeline_) timeline_->setPalette(isDark ? TimelinePalette::dark() : TimelinePalette::light());
}

void EditorDesk::follow(ProjectChange const& change) {
    if (!timeline_ || !change.fields.any()) return;
    timeline_->setFrameRate(session_.document().exportSettings.editingRate());
    timeline_->show(session_.document(), change.fields, change.items);
}

/// The film begins with a card before the edit, which the playhead knows nothing of.
void EditorDesk::followPlayback() {
    Q_EMIT timeChanged();
    if (isFollowing_) return;
    QScopedValueRollback const guard(isFollowing_, true);
    session_.setPlayhead(preview_.playback()->position() - session_.document().introDuration());
}

void EditorDesk::followPlayhead() {
    if (timeline_) timeline_->setPlayhead(session_.playhead());
    if (isFollowing_) return;
    QScopedValueRollback const guard(isFollowing_, true);
    preview_.playback()->seek(session_.playhead() + session_.document().introDuration());
}

void EditorDesk::followSelection() {
    if (timeline_) timeline_->setSelection({session_.selection().begin(), session_.selection().end()});
}

void EditorDesk::followLanes() {
    if (!timeline_ || isKeeping_) return;
    QScopedValueRollback const guard(isKeeping_, true);
    timeline_->setCollapsed(keys(session_.collapsedLanes()));
    timeline_->setSnaps(session_.snaps());
}

void EditorDesk::setLoops(bool loops) {
    if (loops_ == loops) return;
    loops_ = loops;
    followRange();
    Q_EMIT loopsChanged();
}

void EditorDesk::followRange() {
    auto range = session_.range();
    if (timeline_) timeline_->setRange(range);
    if (range.duration > 0) range.start += session_.document().introDuration();
    preview_.playback()->repeat(loops_ ? std::optional(range) : std::nullopt);
}

void EditorDesk::keepView() {
    if (isKeeping_) return;
    QScopedValueRollback const guard(isKeeping_, true);
    session_.setTimelineStart(timeline_->view().start());
    session_.setTimelineScale(timeline_->fits() ? 0 : 1 / timeline_->view().secondsPerPoint());
}

/// While the hand is on it the pictures may be coarser.
void EditorDesk::scrub(double time) {
    QScopedValueRollback const guard(isFollowing_, true);
    session_.setPlayhead(time);
    preview_.scrub(session_.playhead() + session_.document().introDuration());
}

void EditorDesk::take(TimelineIntent const& intent) {
    using namespace timelineIntents;
    bool isEdit = false;
    session_.attempt([&] { isEdit = steps_.take(intent); });
    if (isEdit) return;
    if (auto const* select = std::get_if<Select>(&intent)) {
        session_.select(std::vector<UUID>(select->ids.begin(), select->ids.end()));
    } else if (auto const* moved = std::get_if<Scrub>(&intent)) {
        scrub(moved->time);
    } else if (std::holds_alternative<ScrubEnded>(intent)) {
        preview_.playback()->seek(session_.playhead() + session_.document().introDuration());
    } else if (auto const* opened = std::get_if<Open>(&intent)) {
        session_.select(std::vector<UUID>{opened->id});
    } else if (auto const* lane = std::get_if<ToggleLane>(&intent)) {
        auto names = session_.collapsedLanes();
        auto const name = QString::fromStdString(lane->key);
        if (!names.removeOne(name)) names.push_back(name);
        session_.setCollapsedLanes(names);
    }
}

}
