#include <Tavaro/Studio/Desk/PlayingChoices.h>

#include <TavaroCore/Errors/Error.h>

#include <QScopedValueRollback>

#include <spdlog/spdlog.h>

namespace tavaro {

namespace {

constexpr int restMilliseconds = 300; // a slider is written once, not on its way

}

PlayingChoices::PlayingChoices(Preferences& preferences, EditorDesk& desk)
    : preferences_(preferences)
    , desk_(desk)
    , observation_(preferences.observe([this] { take(); })) {
    rest_.setSingleShot(true);
    rest_.setInterval(restMilliseconds);
    connect(&rest_, &QTimer::timeout, this, [this] { keep(); });
    take();
    auto* const playback = desk.preview()->playback();
    connect(playback, &FilmPlayback::volumeChanged, this, &PlayingChoices::note);
    connect(playback, &FilmPlayback::scrubsAloudChanged, this, &PlayingChoices::note);
    connect(&desk, &EditorDesk::loopsChanged, this, &PlayingChoices::note);
}

PlayingChoices::~PlayingChoices() {
    if (rest_.isActive()) keep();
}

void PlayingChoices::take() {
    if (isBusy_ || rest_.isActive()) return;
    QScopedValueRollback const guard(isBusy_, true);
    auto* const playback = desk_.preview()->playback();
    playback->setVolume(preferences_.get(playingVolume));
    playback->setMuted(preferences_.get(playingMuted));
    playback->setScrubsAloud(preferences_.get(playingScrubsAloud));
    desk_.setLoops(preferences_.get(playingRepeats));
}

void PlayingChoices::note() {
    if (!isBusy_) rest_.start();
}

void PlayingChoices::keep() {
    rest_.stop();
    QScopedValueRollback const guard(isBusy_, true);
    auto* const playback = desk_.preview()->playback();
    try {
        keep(playingVolume, playback->volume());
        keep(playingMuted, playback->isMuted());
        keep(playingScrubsAloud, playback->scrubsAloud());
        keep(playingRepeats, desk_.loops());
    } catch (Error const& error) {
        spdlog::warn("{}", error.what());
    }
}

template<class Value> void PlayingChoices::keep(Preference<Value> const& preference, Value const& value) {
    if (preferences_.get(preference) != value) preferences_.set(preference, value);
}

}
