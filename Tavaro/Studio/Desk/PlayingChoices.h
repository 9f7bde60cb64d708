#pragma once

#include <Tavaro/Studio/Desk/EditorDesk.h>

#include <TavaroPlatform/Preferences/Preferences.h>

#include <QObject>
#include <QTimer>

namespace tavaro {

inline Preference<double> const playingVolume{"com.tavaro.studio.volume", 1};
inline Preference<bool> const playingMuted{"com.tavaro.studio.muted", false};
inline Preference<bool> const playingScrubsAloud{"com.tavaro.studio.scrubsAloud", true};
inline Preference<bool> const playingRepeats{"com.tavaro.studio.repeats", false};

/// Keeps how films are played, between starts and for all projects that are open: how loud, whether over and over,
/// whether scrubbing is heard. What is chosen on the desk is written once the hand rests; what is written is taken over
/// by every desk. Main thread; preferences and desk outlive it.
class PlayingChoices final : public QObject {
public:
    PlayingChoices(Preferences& preferences, EditorDesk& desk);
    /// Writes what is not written yet.
    ~PlayingChoices() override;

private:
    void take();
    void note();
    void keep();
    template<class Value> void keep(Preference<Value> const& preference, Value const& value);

    Preferences& preferences_;
    EditorDesk& desk_;
    QTimer rest_;
    bool isBusy_ = false; // one side follows the other, which need not follow back
    Preferences::Observation observation_;
};

}
