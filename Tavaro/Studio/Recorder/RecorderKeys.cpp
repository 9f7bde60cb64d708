#include <Tavaro/Studio/Recorder/RecorderKeys.h>

#include <Tavaro/Model/Recording/RecordingPreferences.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroPlatform/Processes/DesktopSession.h>
#include <TavaroPlatform/Queues/MainQueue.h>

#include <QLoggingCategory>

#include <utility>
#include <vector>

namespace tavaro {

RecorderKeys::RecorderKeys(MainQueue& queue, Preferences& preferences, RecorderModel& recorder)
    : queue_(queue)
    , preferences_(preferences)
    , recorder_(&recorder)
    , areGiven_(desktopKind() == DesktopKind::x11)
    , observation_(preferences.observe([this] { grabAll(); })) {
    grabAll();
}

RecorderKeys::~RecorderKeys() = default;

QString RecorderKeys::toggleKey() const { return QString::fromStdString(preferences_.get(toggleShortcut)); }

QString RecorderKeys::pauseKey() const { return QString::fromStdString(preferences_.get(pauseShortcut)); }

QString RecorderKeys::problem() const { return toggle_.problem.isEmpty() ? pause_.problem : toggle_.problem; }

void RecorderKeys::setToggleKey(QString const& shortcut) { keep(toggleShortcut, shortcut); }

void RecorderKeys::setPauseKey(QString const& shortcut) { keep(pauseShortcut, shortcut); }

void RecorderKeys::keep(Preference<std::string> const& preference, QString const& shortcut) {
    if (preferences_.get(preference) == shortcut.toStdString()) return;
    try {
        preferences_.set(preference, shortcut.toStdString());
    } catch (Error const& error) {
        qWarning("The shortcut could not be kept: %s", error.what());
        Q_EMIT changed();
    }
}

void RecorderKeys::grabAll() {
    if (!areGiven_) return;
    grab(toggle_, preferences_.get(toggleShortcut), &RecorderModel::toggle);
    grab(pause_, preferences_.get(pauseShortcut), &RecorderModel::togglePause);
    std::vector<Chord> chords;
    for (auto const* const grab : {&toggle_, &pause_})
        if (grab->key) chords.push_back(grab->key->chord());
    if (recorder_) recorder_->setShortcuts(std::move(chords));
}

void RecorderKeys::grab(Grab& grab, std::string const& shortcut, void (RecorderModel::*order)()) {
    if (shortcut == grab.shortcut) return;
    grab = {.shortcut = shortcut};
    try {
        auto const pressed = [&queue = queue_, recorder = recorder_, order] { // on the key's own thread
            queue.async([recorder, order] {
                if (recorder) (recorder->*order)();
            });
        };
        if (!shortcut.empty()) grab.key = std::make_unique<x11::GlobalKey>(shortcut, "", pressed);
    } catch (CaptureError const& error) {
        grab.problem = QString::fromUtf8(error.what());
    }
    Q_EMIT changed();
}

}
