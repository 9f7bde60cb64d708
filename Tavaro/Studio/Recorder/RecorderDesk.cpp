#include <Tavaro/Studio/Recorder/RecorderDesk.h>

#include <Tavaro/Control/ControlServer.h>
#include <Tavaro/Model/Application/Application.h>

#include <TavaroPlatform/Sockets/SocketError.h>

#include <QLoggingCategory>

namespace tavaro {

namespace {

std::unique_ptr<ControlServer> openToCommands(MainQueue& queue, Application& application, RecorderModel& recorder) {
    try {
        ControlServer::Settings settings;
        settings.prepare = [&recorder](std::function<void()> next) { recorder.settle(std::move(next)); };
        return std::make_unique<ControlServer>(queue, application, std::move(settings));
    } catch (SocketError const& error) {
        qWarning("“tavaro record --toggle” does not reach Tavaro: %s", error.what());
        return nullptr;
    }
}

}

RecorderDesk::RecorderDesk(MainQueue& queue, Application& application)
    : recorder_(queue, application)
    , bar_(recorder_, application.preferences())
    , keys_(queue, application.preferences(), recorder_)
    , firstTake_(recorder_, application.preferences())
    , tray_(recorder_)
    , control_(openToCommands(queue, application, recorder_)) {
    connect(&keys_, &RecorderKeys::changed, this, &RecorderDesk::followWays);
    connect(&tray_, &TrayItem::changed, this, &RecorderDesk::followWays);
    followWays();
}

RecorderDesk::~RecorderDesk() = default;

void RecorderDesk::followWays() { bar_.setHasOtherWay(keys_.canToggle() || tray_.isThere()); }

}
