#include <Tavaro/Studio/Recorder/RecorderDesk.h>

#include <Tavaro/Control/ControlServer.h>
#include <Tavaro/Model/Application/Application.h>

#include <TavaroPlatform/Sockets/SocketError.h>

#include <QLoggingCategory>

namespace tavaro {

RecorderDesk::RecorderDesk(MainQueue& queue, Application& application)
    : recorder_(queue, application)
    , bar_(recorder_, application.preferences())
    , keys_(queue, application.preferences(), recorder_)
    , firstTake_(recorder_, application.preferences())
    , tray_(recorder_)
    , terminals_(queue)
    , queue_(queue)
    , application_(application) {
    connect(&keys_, &RecorderKeys::changed, this, &RecorderDesk::followWays);
    connect(&tray_, &TrayItem::changed, this, &RecorderDesk::followWays);
    followWays();
}

RecorderDesk::~RecorderDesk() = default;

void RecorderDesk::openToCommands() {
    try {
        ControlServer::Settings settings;
        settings.prepare = [this](std::function<void()> next) { recorder_.settle(std::move(next)); };
        control_ = std::make_unique<ControlServer>(queue_, application_, std::move(settings));
    } catch (SocketError const& error) {
        qWarning("“tavaro record --toggle” does not reach Tavaro: %s", error.what());
    }
}

void RecorderDesk::followWays() { bar_.setHasOtherWay(keys_.canToggle() || tray_.isThere()); }

}
