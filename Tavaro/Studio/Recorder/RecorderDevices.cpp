#include <Tavaro/Studio/Recorder/RecorderDevices.h>

#include <Tavaro/Model/Recording/RecordingPreferences.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <QLoggingCategory>

#include <utility>

namespace tavaro {

namespace {

QVariantMap entry(QString const& id, QString const& name) { return {{"id", id}, {"name", name}}; }

QString text(std::string const& value) { return QString::fromStdString(value); }

/// Behind the default one, which follows the system's choice. One that is chosen and not there now stays in the list.
template<class Device>
QVariantList entriesOf(std::vector<Device> const& devices, QString const& chosen, QString const& defaultName) {
    QVariantList list{entry({}, defaultName)};
    bool isThere = chosen.isEmpty();
    for (auto const& device : devices) {
        list << entry(text(device.id), text(device.name));
        isThere = isThere || list.back().toMap()["id"] == chosen;
    }
    if (!isThere) list << entry(chosen, RecorderDevices::tr("%1 (not connected)").arg(chosen));
    return list;
}

}

RecorderDevices::RecorderDevices(MainQueue& queue, Preferences& preferences)
    : preferences_(preferences)
    , microphoneSound_(queue, microphoneMeter_)
    , systemSound_(queue, systemSoundMeter_)
    , mirror_(queue)
    , observation_(preferences.observe([this] {
        Q_EMIT chosen();
        follow();
    })) {}

bool RecorderDevices::microphoneOn() const { return preferences_.get(microphoneRecorded); }
bool RecorderDevices::systemSoundOn() const { return preferences_.get(systemAudioRecorded); }
bool RecorderDevices::cameraOn() const { return preferences_.get(cameraRecorded); }
QString RecorderDevices::microphone() const { return text(preferences_.get(microphoneChosen)); }
QString RecorderDevices::player() const { return text(preferences_.get(systemAudioChosen)); }
QString RecorderDevices::camera() const { return text(preferences_.get(cameraChosen)); }

void RecorderDevices::setMicrophoneOn(bool isOn) { keep(microphoneRecorded, isOn); }
void RecorderDevices::setSystemSoundOn(bool isOn) { keep(systemAudioRecorded, isOn); }
void RecorderDevices::setCameraOn(bool isOn) { keep(cameraRecorded, isOn); }
void RecorderDevices::setMicrophone(QString const& id) { keep(microphoneChosen, id.toStdString()); }
void RecorderDevices::setPlayer(QString const& name) { keep(systemAudioChosen, name.toStdString()); }
void RecorderDevices::setCamera(QString const& id) { keep(cameraChosen, id.toStdString()); }

template<class Value> void RecorderDevices::keep(Preference<Value> const& preference, Value const& value) {
    if (preferences_.get(preference) == value) return;
    try {
        preferences_.set(preference, value);
    } catch (Error const& error) {
        qWarning("What the recorder takes in could not be kept: %s", error.what());
        Q_EMIT chosen(); // switches go back
    }
}

void RecorderDevices::show(SourceList const& list) {
    auto const before = std::tuple(microphones_, players_, cameras_, hasSystemSound_);
    microphones_ =
        list.microphones.empty() ? QVariantList() : entriesOf(list.microphones, microphone(), tr("Default microphone"));
    cameras_ = list.cameras.empty() ? QVariantList() : entriesOf(list.cameras, camera(), tr("Default camera"));
    hasSystemSound_ = list.systemSound.has_value();
    players_ = {entry({}, tr("All applications"))};
    bool isThere = player().isEmpty();
    for (auto const& name : list.systemSound ? list.systemSound->applications : std::vector<std::string>()) {
        players_ << entry(text(name), text(name));
        isThere = isThere || text(name) == player();
    }
    if (!isThere) players_ << entry(player(), tr("%1 (silent now)").arg(player()));
    if (before != std::tuple(microphones_, players_, cameras_, hasSystemSound_)) Q_EMIT listed();
    follow();
}

void RecorderDevices::setWatched(bool isWatched) {
    isWatched_ = isWatched;
    follow();
}

void RecorderDevices::follow() {
    if (isLent_) return;
    bool const hears = isWatched_ && microphoneOn() && hasMicrophone();
    bool const plays = isWatched_ && systemSoundOn() && hasSystemSound_;
    bool const looks = isWatched_ && cameraOn() && hasCamera();
    microphoneSound_.listen(hears ? std::optional<SoundMonitor::Source>(MicrophoneSource{microphone().toStdString()})
                                  : std::nullopt);
    systemSound_.listen(plays ? std::optional<SoundMonitor::Source>(SystemSoundSource{player().toStdString()})
                              : std::nullopt);
    mirror_.look(looks ? std::optional(CameraDeviceSource{camera().toStdString()}) : std::nullopt);
}

void RecorderDevices::letGo(std::function<void()> next) {
    isLent_ = true;
    microphoneSound_.listen(std::nullopt);
    systemSound_.listen(std::nullopt);
    mirror_.letGo(std::move(next));
}

void RecorderDevices::takeBack() {
    isLent_ = false;
    microphoneMeter_.clear();
    systemSoundMeter_.clear();
    follow();
}

void RecorderDevices::showTake(std::vector<SoundState> const& sounds) {
    for (auto const& sound : sounds) {
        if (sound.role == StreamRole::microphone) microphoneMeter_.show(sound, mediaClockNow());
        if (sound.role == StreamRole::systemSound) systemSoundMeter_.show(sound, mediaClockNow());
    }
}

}
