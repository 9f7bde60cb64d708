#pragma once

#include "../../Capture/TestDisplay.h"
#include "../../Core/Package/TemporaryFolder.h"

#include <Tavaro/Model/Application/Application.h>
#include <Tavaro/Model/Recording/RecordingPreferences.h>
#include <Tavaro/Studio/Loop/QueueInLoop.h>
#include <Tavaro/Studio/Recorder/RecorderModel.h>

#include <TavaroPlatform/Queues/MainQueue.h>

#include <QCoreApplication>
#include <QTimer>

#include <chrono>
#include <cstdlib>
#include <functional>

namespace tavaro {

/// Runs the loop until it is so; false after twenty seconds.
inline bool becomes(std::function<bool()> const& isSo) {
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    QTimer wakes; // since not all that is waited for is an event
    wakes.start(10);
    while (!isSo() && std::chrono::steady_clock::now() < end)
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    return isSo();
}

/// An application of one test, whose display is a virtual one.
class RecorderTest : public DisplayTest {
protected:
    RecorderTest() { setenv("XDG_DATA_HOME", folder.path().c_str(), 1); }
    void SetUp() override {
        DisplayTest::SetUp();
        if (!display) return;
        setenv("DISPLAY", display->name().c_str(), 1);
        application.preferences().set(countdownChosen, 0);
    }
    ~RecorderTest() override {
        unsetenv("XDG_DATA_HOME");
        unsetenv("DISPLAY");
    }

    static RecorderModel::Settings settings() {
        return {.undoSeconds = 3, .undoTick = 100000, .desktop = RecorderSources::Desktop::open};
    }

    TemporaryFolder const folder;
    MainQueue queue;
    QueueInLoop const loop{queue};
    Application application{queue,
                            {.library = {folder / "Movies"},
                             .index = folder / "cache/library.json",
                             .preferences = folder / "config/preferences.json"}};
};

}
