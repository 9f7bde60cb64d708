#pragma once

#include <Tavaro/Studio/Recorder/LiveCamera.h>
#include <Tavaro/Studio/Recorder/LiveSound.h>
#include <Tavaro/Studio/Recorder/SoundMeter.h>

#include <TavaroCapture/Sources/SourceList.h>
#include <TavaroPlatform/Preferences/Preferences.h>

#include <QObject>
#include <QVariantList>

#include <functional>

namespace tavaro {

/// The sounds and the camera of the next take: which there are, which are switched on, and how they are now. What is
/// chosen is kept as the user's preferences. A device is open while it is switched on and somebody looks, and not while
/// a take has it.
class RecorderDevices : public QObject {
    Q_OBJECT
    // Each entry has an "id" and a "name"; the first is the default.
    Q_PROPERTY(QVariantList microphones READ microphones NOTIFY listed)
    Q_PROPERTY(QVariantList players READ players NOTIFY listed)
    Q_PROPERTY(QVariantList cameras READ cameras NOTIFY listed)
    Q_PROPERTY(bool hasMicrophone READ hasMicrophone NOTIFY listed)
    Q_PROPERTY(bool hasSystemSound READ hasSystemSound NOTIFY listed)
    Q_PROPERTY(bool hasCamera READ hasCamera NOTIFY listed)
    Q_PROPERTY(bool microphoneOn READ microphoneOn WRITE setMicrophoneOn NOTIFY chosen)
    Q_PROPERTY(bool systemSoundOn READ systemSoundOn WRITE setSystemSoundOn NOTIFY chosen)
    Q_PROPERTY(bool cameraOn READ cameraOn WRITE setCameraOn NOTIFY chosen)
    Q_PROPERTY(QString microphone READ microphone WRITE setMicrophone NOTIFY chosen)
    Q_PROPERTY(QString player READ player WRITE setPlayer NOTIFY chosen)
    Q_PROPERTY(QString camera READ camera WRITE setCamera NOTIFY chosen)
    Q_PROPERTY(tavaro::SoundMeter* microphoneMeter READ microphoneMeter CONSTANT)
    Q_PROPERTY(tavaro::SoundMeter* systemSoundMeter READ systemSoundMeter CONSTANT)
    Q_PROPERTY(tavaro::LiveCamera* mirror READ mirror CONSTANT)

public:
    RecorderDevices(MainQueue& queue, Preferences& preferences);

    QVariantList const& microphones() const { return microphones_; }
    QVariantList const& players() const { return players_; }
    QVariantList const& cameras() const { return cameras_; }
    bool hasMicrophone() const { return microphones_.size() > 1; }
    bool hasSystemSound() const { return hasSystemSound_; }
    bool hasCamera() const { return cameras_.size() > 1; }
    bool microphoneOn() const;
    bool systemSoundOn() const;
    bool cameraOn() const;
    QString microphone() const;
    QString player() const;
    QString camera() const;
    void setMicrophoneOn(bool isOn);
    void setSystemSoundOn(bool isOn);
    void setCameraOn(bool isOn);
    void setMicrophone(QString const& id);
    void setPlayer(QString const& name);
    void setCamera(QString const& id);
    SoundMeter* microphoneMeter() { return &microphoneMeter_; }
    SoundMeter* systemSoundMeter() { return &systemSoundMeter_; }
    LiveCamera* mirror() { return &mirror_; }

    void show(SourceList const& list);
    void setWatched(bool isWatched);
    /// Lets go of all devices; `next` is called once the camera may be opened by others. They stay closed until
    /// `takeBack`.
    void letGo(std::function<void()> next);
    void takeBack();
    /// How loud a take is.
    void showTake(std::vector<SoundState> const& sounds);

Q_SIGNALS:
    void listed();
    void chosen();

private:
    template<class Value> void keep(Preference<Value> const& preference, Value const& value);
    void follow();

    Preferences& preferences_;
    QVariantList microphones_, players_, cameras_;
    bool hasSystemSound_ = false;
    bool isWatched_ = false;
    bool isLent_ = false; // to a take
    SoundMeter microphoneMeter_, systemSoundMeter_;
    LiveSound microphoneSound_, systemSound_;
    LiveCamera mirror_;
    Preferences::Observation const observation_;
};

}
