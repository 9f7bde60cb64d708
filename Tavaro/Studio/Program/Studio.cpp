#include <Tavaro/Studio/Program/Studio.h>

#include <Tavaro/Control/ControlCaller.h>
#include <Tavaro/Control/ControlServer.h>

#include <TavaroPlatform/Sockets/SocketError.h>

#include <QCoreApplication>

#include <spdlog/spdlog.h>

#include <utility>

namespace tavaro {

namespace {

constexpr int atRest = 500, soon = 50; // milliseconds between looks
constexpr int longestSave = 3000;      // milliseconds, for somebody else to be done with a project
constexpr int shown = 3000;            // milliseconds, after which the window is there
constexpr int begun = 20'000;          // milliseconds, after which nobody waits for the window any more

UpdateCheck::Settings ownUpdates() { return {.program = QCoreApplication::applicationFilePath().toStdString()}; }

}

Studio::Studio(MainQueue& queue, std::optional<ApplicationInstance> place, bool beginsMinimized)
    : queue_(queue)
    , place_(std::move(place))
    , application_(queue)
    , library_(queue, application_)
    , recorder_(queue, application_)
    , exports_(queue, application_)
    , projects_(queue, application_.projects(), application_.preferences())
    , agentSettings_(application_.preferences())
    , updates_(queue, application_.preferences(), ownUpdates())
    , speech_(queue, application_.preferences())
    , asking_(queue, "com.tavaro.studio.place")
    , beginsMinimized_(beginsMinimized) {
    connect(&library_, &Library::openRequested, &projects_, &OpenedProjects::open);
    connect(&library_, &Library::left, &projects_, &OpenedProjects::forget);
    connect(&library_, &Library::failed, this, &Studio::failed);
    connect(recorder_.recorder(), &RecorderModel::saved, this, &Studio::show);
    connect(&exports_, &ExportsDesk::failed, this, &Studio::failed);
    connect(recorder_.tray(), &TrayItem::windowWanted, this, &Studio::bringBack);
    connect(recorder_.tray(), &TrayItem::libraryWanted, this, [this] {
        Q_EMIT placeWanted(QStringLiteral("library"));
        bringBack();
    });
    connect(recorder_.tray(), &TrayItem::endWanted, this, &Studio::closeWanted);
    connect(recorder_.terminals(), &TerminalTakes::ended, &library_, &Library::refresh);
    connect(&projects_, &OpenedProjects::failed, this, &Studio::failed);
    connect(&agentSettings_, &AgentSettings::failed, this, &Studio::failed);
    connect(&speech_, &SpeechSettings::failed, this, &Studio::failed);
    connect(&look_, &QTimer::timeout, this, &Studio::look);
    connect(&consent_, &ConsentQuestions::changed, this, [this] {
        if (consent_.isAsking()) bringBack();
    });
    openToStarts();
    if (place_)
        takePlace();
    else
        agentSettings_.setProblem(tr("Another Tavaro without a window has agents for now: this one takes over once "
                                     "that has nothing under way."));
    connect(&updates_, &UpdateCheck::failed, this, &Studio::failed);
    QTimer::singleShot(begun, &updates_, &UpdateCheck::lookWeekly);
    look_.start(atRest);
}

QString Studio::version() { return QCoreApplication::applicationVersion(); }

void Studio::takePlace() {
    agentSettings_.setProblem({});
    openToAgents();
    recorder_.openToCommands();
    QTimer::singleShot(shown, this, [this] { application_.newTakes().takeUp(); });
}

void Studio::askForPlace() {
    try {
        place_ = ApplicationInstance::claim();
    } catch (Error const& error) {
        return agentSettings_.setProblem(QString::fromUtf8(error.what()));
    }
    if (place_) return takePlace();
    if (std::exchange(isAsking_, true)) return;
    asking_.ask([] { return askToHandOver(controlSocketPath()); }, [this](auto const&) { isAsking_ = false; });
}

void Studio::openToAgents() {
    try {
        agents_.emplace(queue_, application_,
                        AppMCPBackend::Settings{.version = version().toStdString(), .ask = consent_.asker()});
    } catch (SocketError const& error) {
        spdlog::error("Tavaro MCP: couldn't open the socket: {}", error.what());
        agentSettings_.setProblem(tr("Agents cannot reach Tavaro: %1").arg(QString::fromUtf8(error.what())));
    }
}

void Studio::openToStarts() {
    try {
        starts_.emplace(queue_, [this](Start const& start) {
            open(start);
            library_.refresh();
            if (!start.isMinimized) bringBack();
        });
    } catch (SocketError const& error) {
        spdlog::warn("A second start cannot be handed over: {}", error.what());
    }
}

void Studio::open(Start const& start) {
    QList<QUrl> urls;
    for (auto const& file : start.files) urls.push_back(QUrl::fromLocalFile(QString::fromStdString(file)));
    library_.bring(urls);
    if (!start.place.empty()) Q_EMIT placeWanted(QString::fromStdString(start.place));
}

void Studio::show(QString const& take, QString const& startedBy) {
    library_.refresh();
    if (startedBy.isEmpty()) projects_.openTake(take);
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
    starts_.reset(); // who starts the program from here on waits until it has ended, and gets a window
    exports_.end();
    if (agents_) agents_->beginToEnd();
    recorder_.recorder()->settle([] {}); // a take that was thrown away is not saved
    application_.end();
    projects_.save();
    saving_.setRemainingTime(longestSave);
    look_.start(soon);
}

void Studio::endUnlessThatLosesEdits() {
    auto const losses = projects_.losses();
    if (losses.isEmpty()) return end();
    bringBack();
    Q_EMIT failed(losses);
}

void Studio::look() {
    application_.preferences().refresh();
    projects_.refresh();
    if (!place_ && !isEnding_) askForPlace();
    bool const isLeft = isClosed_ && !isEnding_;
    if (isLeft && exports_.isIdle() && !application_.exporter().isExporting()) endUnlessThatLosesEdits();
    bool const isSaved = projects_.areSaved() || saving_.hasExpired();
    if (isEnding_ && isSaved && !application_.isBusy()) QCoreApplication::quit();
}

}
