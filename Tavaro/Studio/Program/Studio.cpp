#include <Tavaro/Studio/Program/Studio.h>

#include <TavaroPlatform/Sockets/SocketError.h>

#include <QCoreApplication>

#include <spdlog/spdlog.h>

namespace tavaro {

namespace {

constexpr int atRest = 500, soon = 50; // milliseconds between looks

}

Studio::Studio(MainQueue& queue)
    : application_(queue)
    , library_(queue, application_)
    , recorder_(queue, application_)
    , exports_(queue, application_)
    , projects_(queue, application_.projects())
    , agentSettings_(application_.preferences()) {
    connect(&library_, &Library::openRequested, &projects_, &OpenedProjects::open);
    connect(&library_, &Library::left, &projects_, &OpenedProjects::forget);
    connect(&library_, &Library::failed, this, &Studio::failed);
    connect(recorder_.recorder(), &RecorderModel::saved, this, &Studio::show);
    connect(recorder_.tray(), &TrayItem::windowWanted, this, &Studio::bringBack);
    connect(&exports_, &ExportsDesk::failed, this, &Studio::failed);
    connect(&projects_, &OpenedProjects::failed, this, &Studio::failed);
    connect(&agentSettings_, &AgentSettings::failed, this, &Studio::failed);
    connect(&look_, &QTimer::timeout, this, &Studio::look);
    connect(&consent_, &ConsentQuestions::changed, this, [this] {
        if (consent_.isAsking()) bringBack();
    });
    openToAgents(queue);
    openToStarts(queue);
    look_.start(atRest);
}

QString Studio::version() { return QCoreApplication::applicationVersion(); }

void Studio::openToAgents(MainQueue& queue) {
    try {
        agents_.emplace(queue, application_,
                        AppMCPBackend::Settings{.version = version().toStdString(), .ask = consent_.asker()});
    } catch (SocketError const& error) {
        spdlog::error("Tavaro MCP: couldn't open the socket: {}", error.what());
        agentSettings_.setProblem(QString::fromUtf8(error.what()));
    }
}

void Studio::openToStarts(MainQueue& queue) {
    try {
        starts_.emplace(queue, [this](std::vector<std::string> const& files) {
            open(files);
            library_.refresh();
            bringBack();
        });
    } catch (SocketError const& error) {
        spdlog::warn("A second start cannot be handed over: {}", error.what());
    }
}

void Studio::open(std::vector<std::string> const& files) {
    QList<QUrl> urls;
    for (auto const& file : files) urls.push_back(QUrl::fromLocalFile(QString::fromStdString(file)));
    library_.bring(urls);
}

void Studio::show(QString const& take, QString const& startedBy) {
    library_.refresh();
    if (startedBy.isEmpty()) projects_.open(take);
}

void Studio::windowClosed() {
    setClosed(true);
    look_.start(soon);
}

void Studio::bringBack() {
    if (isEnding_) return;
    setClosed(false);
    look_.start(atRest);
    Q_EMIT raised();
}

void Studio::setClosed(bool isClosed) {
    if (isClosed == isClosed_) return;
    isClosed_ = isClosed;
    Q_EMIT closedChanged();
}

void Studio::end() {
    if (isEnding_) return;
    isEnding_ = true;
    exports_.end();
    if (agents_) agents_->beginToEnd();
    recorder_.recorder()->settle([] {}); // a take that was thrown away is not saved
    application_.end();
    look_.start(soon);
}

void Studio::look() {
    application_.preferences().refresh();
    projects_.refresh();
    if (isClosed_ && exports_.isIdle() && !application_.exporter().isExporting()) end();
    if (isEnding_ && !application_.isBusy()) QCoreApplication::quit();
}

}
