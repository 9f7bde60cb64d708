#include <Tavaro/Studio/Recorder/RecorderModel.h>

#include <Tavaro/Model/Application/Application.h>
#include <Tavaro/Model/Privacy/PrivacyPreferences.h>
#include <Tavaro/Model/Recording/RecordingChoice.h>
#include <Tavaro/Model/Recording/RecordingPreferences.h>
#include <Tavaro/Studio/Recorder/Sentence.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Values/Timecode.h>
#include <TavaroPlatform/Folders/Folders.h>
#include <TavaroPlatform/Processes/DesktopSession.h>

#include <QLoggingCategory>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <utility>

namespace tavaro {

namespace {

constexpr int betweenLists = 2500; // milliseconds
constexpr int ample = 60;          // minutes: nobody asks about so much room
constexpr double usualRate = 1e6;  // bytes a second of a take, before any was made

QString text(std::string const& value) { return QString::fromStdString(value); }

/// Where takes are written, half of what is free: a take is joined beside its segments. 0: not known.
double bytesForTakes() {
    auto folder = folders::recordings();
    std::error_code code;
    while (!std::filesystem::exists(folder, code) && folder.has_relative_path()) folder = folder.parent_path();
    auto const space = std::filesystem::space(folder, code);
    return code ? 0 : static_cast<double>(space.available) / 2;
}

QString nameOfSource(CaptureSource const& source) {
    if (std::holds_alternative<DisplaySource>(source)) return RecorderModel::tr("Display");
    if (std::holds_alternative<WindowSource>(source)) return RecorderModel::tr("Window");
    if (auto const* const app = std::get_if<ApplicationSource>(&source)) return text(app->name);
    return RecorderModel::tr("Area");
}

QString healthOf(RecorderProgress const& take) {
    if (take.isScreenAway) return RecorderModel::tr("No pictures come from the screen.");
    if (take.isCameraAway) return RecorderModel::tr("No pictures come from the camera.");
    for (auto const& sound : take.sounds)
        if (sound.isAway)
            return RecorderModel::tr("No sound comes from the %1.")
                .arg(QString::fromUtf8(spokenName(sound.role).data(),
                                       static_cast<qsizetype>(spokenName(sound.role).size())));
    return {};
}

RecorderModel::Phase phaseOf(RecorderPhase phase) {
    switch (phase) {
    case RecorderPhase::idle: return RecorderModel::Idle;
    case RecorderPhase::countdown: return RecorderModel::Countdown;
    case RecorderPhase::recording: return RecorderModel::Recording;
    case RecorderPhase::paused: return RecorderModel::Paused;
    case RecorderPhase::finishing: return RecorderModel::Finishing;
    }
    return RecorderModel::Idle;
}

}

RecorderModel::Settings RecorderModel::usualSettings() {
    using Desktop = RecorderSources::Desktop;
    return {.desktop = desktopKind() == DesktopKind::wayland ? Desktop::asksUser : Desktop::open};
}

RecorderModel::RecorderModel(MainQueue& queue, Application& application, Settings settings)
    : queue_(queue)
    , application_(application)
    , settings_(std::move(settings))
    , sources_(queue, application.preferences(), settings_.desktop, settings_.still)
    , devices_(queue, application.preferences())
    , bytesPerSecond_(usualRate)
    , observation_(recorder().observe([this](RecorderState const& state) { follow(state); })) {
    refresh_.setInterval(betweenLists);
    undo_.setInterval(settings_.undoTick);
    connect(&refresh_, &QTimer::timeout, this, &RecorderModel::refresh);
    connect(&undo_, &QTimer::timeout, this, &RecorderModel::tickUndo);
    recorder().setClearing(settings_.clearing);
    recorder().onStarting([this](std::function<void()> next) {
        starting_ = std::move(next);
        devices_.letGo([this] {
            if (auto const goOn = std::exchange(starting_, nullptr)) goOn();
        });
    });
}

RecorderModel::~RecorderModel() {
    observation_.reset();
    recorder().onStarting({});
    if (starting_) starting_(); // or the recording would wait for ever
    if (undoLeft_ > 0 && recorder().isTaking()) recorder().cancel();
}

RecordingController& RecorderModel::recorder() const { return application_.recorder(); }

void RecorderModel::setWatched(bool isWatched) {
    if (isWatched == isWatched_) return;
    isWatched_ = isWatched;
    sources_.setWatched(isWatched && !isUnderWay_);
    devices_.setWatched(isWatched);
    if (isWatched) {
        refresh();
        refresh_.start();
    } else {
        refresh_.stop();
    }
    Q_EMIT watchedChanged();
}

/// While a take goes on nothing is listed, since that costs it processor time.
void RecorderModel::refresh() {
    if (isRefreshing_ || isUnderWay_) return;
    isRefreshing_ = true;
    application_.sources([here = QPointer(this)](Outcome<SourceList> const& outcome) {
        if (!here) return;
        here->isRefreshing_ = false;
        if (outcome.failure()) return here->sources_.fail(sentenceOf(outcome.failure()));
        here->sources_.show(outcome.value());
        here->devices_.show(outcome.value());
        here->noteRoom();
    });
}

void RecorderModel::noteRoom() {
    double const bytes = bytesForTakes();
    roomMinutes_ = bytes > 0 ? static_cast<int>(std::min(bytes / bytesPerSecond_ / 60, 1e6)) : -1;
    follow(recorder().state());
}

int RecorderModel::countdown() const {
    return static_cast<int>(
        std::clamp<std::int64_t>(application_.preferences().get(countdownChosen), 0, longestCountdown));
}

void RecorderModel::setCountdown(int seconds) {
    if (seconds == countdown()) return;
    try {
        application_.preferences().set(countdownChosen, std::clamp(seconds, 0, longestCountdown));
    } catch (Error const& error) {
        qWarning("The countdown could not be kept: %s", error.what());
    }
    Q_EMIT countdownChanged();
}

bool RecorderModel::scansTakes() const { return application_.preferences().get(newTakesScanned); }

void RecorderModel::setScansTakes(bool scans) {
    if (scans == scansTakes()) return;
    try {
        application_.preferences().set(newTakesScanned, scans);
    } catch (Error const& error) {
        fail(QString::fromUtf8(error.what()));
    }
    Q_EMIT scansTakesChanged();
}

QString RecorderModel::keys() const {
    auto const name = nameOf(chosenKeys(application_.preferences()));
    return QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
}

void RecorderModel::setKeys(QString const& keys) {
    if (keys == this->keys()) return;
    try {
        application_.preferences().set(keysChosen, keys.toStdString());
    } catch (Error const& error) {
        fail(QString::fromUtf8(error.what()));
    }
    Q_EMIT keysChanged();
}

QString RecorderModel::room() const {
    int const minutes = roomMinutes();
    if (minutes < 0 || minutes >= ample) return {};
    return minutes < 1 ? tr("Room for less than a minute") : tr("Room for %1 min").arg(minutes);
}

void RecorderModel::record() { begin(chosenRecording(application_.preferences())); }

void RecorderModel::recordFor(double seconds) {
    auto request = chosenRecording(application_.preferences());
    request.seconds = seconds;
    request.countdown = 0;
    begin(std::move(request));
}

void RecorderModel::begin(RecordingRequest request) {
    request.unfinished = UnfinishedOffer::shownElsewhere; // as cards, in the library
    settle([here = QPointer(this), request = std::move(request)] {
        if (!here || !here->recorder().isIdle()) return;
        here->forgetFailure();
        try {
            here->application_.record(request);
        } catch (Error const& error) {
            here->fail(QString::fromUtf8(error.what()));
        }
    });
}

void RecorderModel::togglePause() {
    if (phase() == Recording)
        recorder().pause();
    else if (phase() == Paused)
        recorder().resume();
}

void RecorderModel::stop() {
    if (isTaking())
        recorder().stop();
    else if (phase() == Countdown)
        recorder().cancel();
}

void RecorderModel::toggle() {
    if (phase() == Idle || phase() == ThrownAway)
        record();
    else
        stop();
}

void RecorderModel::throwAway() {
    if (phase() == Countdown) return recorder().cancel();
    if (!isTaking()) return;
    undoLeft_ = settings_.undoSeconds;
    undo_.start();
    recorder().pause();
    follow(recorder().state());
}

void RecorderModel::undoThrowAway() {
    undo_.stop();
    undoLeft_ = 0;
    follow(recorder().state());
}

void RecorderModel::tickUndo() {
    if (undoLeft_ > 0 && --undoLeft_ > 0) return follow(recorder().state());
    undo_.stop();
    if (recorder().isTaking()) recorder().cancel();
}

void RecorderModel::settle(std::function<void()> next) {
    if (undoLeft_ == 0) return next();
    undoLeft_ = 1;
    tickUndo();
    if (recorder().isIdle()) return next();
    recorder().whenOver([next = std::move(next)](RecordingOutcome const&) { next(); });
}

void RecorderModel::forgetFailure() { fail({}); }

void RecorderModel::fail(QString const& sentence) {
    if (sentence == failure_) return;
    failure_ = sentence;
    Q_EMIT failureChanged();
}

std::optional<PixelRect> RecorderModel::filmedPlace() const {
    if (recorder().isIdle()) return std::nullopt;
    return sources_.placeOf(recorder().source());
}

void RecorderModel::follow(RecorderState const& state) {
    bool const isOver = state.phase == RecorderPhase::idle;
    if (!isOver && !isUnderWay_) noteBegin();
    if (undoLeft_ > 0 && state.phase != RecorderPhase::paused) { // somebody else decided about it
        undo_.stop();
        undoLeft_ = 0;
    }
    if (state.phase == RecorderPhase::recording || state.phase == RecorderPhase::paused)
        devices_.showTake(state.take.sounds);
    show(shownOf(state));
}

void RecorderModel::noteBegin() {
    if (!isWatched_) refresh(); // the bar has to know where the displays are
    isUnderWay_ = true;
    sources_.setWatched(false);
    forgetFailure();
    remarks_.clear();
    Q_EMIT remarksChanged();
    recorder().whenOver([here = QPointer(this), who = recorder().state().startedBy](RecordingOutcome const& outcome) {
        if (!here) return;
        here->noteEnd(outcome);
        if (!outcome.made) return;
        Q_EMIT here->saved(text(outcome.made->made.path), text(who));
        if (who.empty()) here->tellRemarks(outcome);
    });
}

void RecorderModel::noteEnd(RecordingOutcome const& outcome) {
    isUnderWay_ = false;
    auto const room = recorder().state().take.roomSeconds.value_or(0);
    if (double const bytes = bytesForTakes(); room > 1 && bytes > 0) bytesPerSecond_ = bytes / room;
    devices_.takeBack();
    sources_.setWatched(isWatched_);
    for (auto const& remark : outcome.remarks) remarks_ << text(remark);
    Q_EMIT remarksChanged();
    bool const isWanted = outcome.kind == RecordingOutcome::Kind::discarded;
    if (!isWanted) fail(text(outcome.sentence()));
    if (isWatched_) refresh();
}

void RecorderModel::tellRemarks(RecordingOutcome const& outcome) {
    constexpr qsizetype most = 3; // that are read before they go
    auto const known = outcome.made->made.limits.value_or(std::vector<std::string>());
    QStringList sentences;
    for (auto const& remark : outcome.remarks)
        if (std::ranges::find(known, remark) == known.end()) sentences << text(remark);
    if (!sentences.isEmpty()) Q_EMIT remarked(sentences.mid(0, most).join(QLatin1Char(' ')));
}

RecorderModel::Shown RecorderModel::shownOf(RecorderState const& state) const {
    Shown shown{.phase = undoLeft_ > 0 ? ThrownAway : phaseOf(state.phase),
                .countdownLeft = state.countdown,
                .isAsking = state.isAsking,
                .undoSeconds = undoLeft_};
    shown.roomMinutes = roomMinutes_;
    if (shown.phase == Idle) return shown;
    auto const& take = state.take;
    shown.time = text(Timecode::format(take.seconds));
    if (take.roomSeconds) shown.roomMinutes = static_cast<int>(std::min(*take.roomSeconds / 60, 1e6));
    shown.lostFrames = take.droppedFrames;
    shown.health = healthOf(take);
    shown.startedBy = text(state.startedBy);
    shown.filming = nameOfSource(recorder().source());
    return shown;
}

void RecorderModel::show(Shown const& shown) {
    if (shown == shown_) return;
    shown_ = shown;
    Q_EMIT changed();
}

}
