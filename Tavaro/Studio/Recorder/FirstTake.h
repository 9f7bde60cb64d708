#pragma once

#include <Tavaro/Studio/Recorder/RecorderModel.h>

#include <TavaroPlatform/Preferences/Preferences.h>

#include <QObject>
#include <QString>

namespace tavaro {

/// Whether its user has made a take, or did not want to be led to one.
inline Preference<bool> const firstTakeMade{"com.tavaro.studio.firstTakeMade"};

/// The way of somebody new to the first take, in three steps: what to film, with which sound, and a take of a few
/// seconds that ends by itself, polished.
class FirstTake : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isWanted READ isWanted NOTIFY changed)
    Q_PROPERTY(tavaro::FirstTake::Step step READ step NOTIFY changed)
    Q_PROPERTY(bool canGoOn READ canGoOn NOTIFY changed)
    Q_PROPERTY(int seconds READ seconds CONSTANT) // of the take

public:
    enum Step { Source, Sound, Take };
    Q_ENUM(Step)

    FirstTake(RecorderModel& recorder, Preferences& preferences, int seconds = 5);

    bool isWanted() const;
    Step step() const { return step_; }
    bool canGoOn() const;
    int seconds() const { return seconds_; }

    /// To the next step; from the last one the take begins.
    Q_INVOKABLE void goOn();
    Q_INVOKABLE void goBack();
    /// Not now, nor later.
    Q_INVOKABLE void leave();

Q_SIGNALS:
    void changed();
    /// The take is saved, polished, as this project.
    void made(QString const& path);

private:
    void setStep(Step step);

    RecorderModel& recorder_;
    Preferences& preferences_;
    int const seconds_;
    Step step_ = Source;
    bool isTaking_ = false;
};

}
