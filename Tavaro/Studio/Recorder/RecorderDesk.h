#pragma once

#include <Tavaro/Studio/Recorder/FirstTake.h>
#include <Tavaro/Studio/Recorder/RecorderBarModel.h>
#include <Tavaro/Studio/Recorder/RecorderKeys.h>
#include <Tavaro/Studio/Recorder/RecorderModel.h>
#include <Tavaro/Studio/Recorder/TerminalTakes.h>
#include <Tavaro/Studio/Recorder/TrayItem.h>

#include <QObject>

#include <memory>

namespace tavaro {

class ControlServer;

/// The whole recorder of a program with windows: its model, its bar, and the ways to it from elsewhere: shortcuts, the
/// tray, `tavaro record --toggle`. It goes before the application.
class RecorderDesk : public QObject {
    Q_OBJECT
    Q_PROPERTY(tavaro::RecorderModel* recorder READ recorder CONSTANT)
    Q_PROPERTY(tavaro::RecorderBarModel* bar READ bar CONSTANT)
    Q_PROPERTY(tavaro::RecorderKeys* keys READ keys CONSTANT)
    Q_PROPERTY(tavaro::FirstTake* firstTake READ firstTake CONSTANT)
    Q_PROPERTY(tavaro::TrayItem* tray READ tray CONSTANT)
    Q_PROPERTY(tavaro::TerminalTakes* terminals READ terminals CONSTANT)

public:
    RecorderDesk(MainQueue& queue, Application& application);
    ~RecorderDesk() override;

    RecorderModel* recorder() { return &recorder_; }
    RecorderBarModel* bar() { return &bar_; }
    RecorderKeys* keys() { return &keys_; }
    FirstTake* firstTake() { return &firstTake_; }
    TrayItem* tray() { return &tray_; }
    TerminalTakes* terminals() { return &terminals_; }

    /// From here on `tavaro record --toggle` reaches it: for the program that is the user's application.
    void openToCommands();

private:
    void followWays();

    RecorderModel recorder_;
    RecorderBarModel bar_;
    RecorderKeys keys_;
    FirstTake firstTake_;
    TrayItem tray_;
    TerminalTakes terminals_;
    MainQueue& queue_;
    Application& application_;
    std::unique_ptr<ControlServer> control_; // none where its socket is not, or cannot be opened
};

}
