#pragma once

#include <Tavaro/Studio/Recorder/RecorderModel.h>

#include <TavaroCapture/X11/GlobalKey.h>
#include <TavaroPlatform/Preferences/Preferences.h>

#include <QObject>
#include <QString>

#include <memory>
#include <string>

namespace tavaro {

/// Shortcuts that work the recorder whichever window has the keyboard, as the user has chosen them. An X11 desktop
/// gives them; under Wayland the desktop's own settings do, by a command.
class RecorderKeys : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool areGiven READ areGiven CONSTANT) // whether this desktop gives programs any
    Q_PROPERTY(QString toggleKey READ toggleKey WRITE setToggleKey NOTIFY changed) // as people write it; empty: none
    Q_PROPERTY(QString pauseKey READ pauseKey WRITE setPauseKey NOTIFY changed)
    Q_PROPERTY(bool canToggle READ canToggle NOTIFY changed)
    Q_PROPERTY(QString problem READ problem NOTIFY changed) // why one of them does not work; empty: they do

public:
    RecorderKeys(MainQueue& queue, Preferences& preferences, RecorderModel& recorder);
    ~RecorderKeys() override;

    bool areGiven() const { return areGiven_; }
    QString toggleKey() const;
    QString pauseKey() const;
    bool canToggle() const { return toggle_.key != nullptr; }
    QString problem() const;
    void setToggleKey(QString const& shortcut);
    void setPauseKey(QString const& shortcut);

Q_SIGNALS:
    void changed();

private:
    struct Grab {
        std::string shortcut;
        std::unique_ptr<x11::GlobalKey> key;
        QString problem;
    };
    void keep(Preference<std::string> const& preference, QString const& shortcut);
    void grabAll();
    void grab(Grab& grab, std::string const& shortcut, void (RecorderModel::*order)());

    MainQueue& queue_;
    Preferences& preferences_;
    QPointer<RecorderModel> recorder_;
    bool const areGiven_;
    Grab toggle_, pause_;
    Preferences::Observation const observation_;
};

}
