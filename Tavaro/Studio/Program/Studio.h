#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Agents/AppMCPBackend.h>
#include <Tavaro/Model/Application/Application.h>
#include <Tavaro/Model/Application/ApplicationInstance.h>
#include <Tavaro/Model/Jobs/SideQueue.h>
#endif
#include <Tavaro/Studio/Exports/ExportsDesk.h>
#include <Tavaro/Studio/Library/Library.h>
#include <Tavaro/Studio/Recorder/RecorderDesk.h>
#include <Tavaro/Studio/Settings/AgentSettings.h>
#include <Tavaro/Studio/Settings/ConsentQuestions.h>
#include <Tavaro/Studio/Settings/SpeechSettings.h>
#include <Tavaro/Studio/Settings/UpdateCheck.h>

#include <Tavaro/Studio/Program/OpenedProjects.h>
#include <Tavaro/Studio/Program/SecondStart.h>

#include <QDeadlineTimer>
#include <QObject>
#include <QTimer>

#include <optional>

namespace tavaro {

/// The desktop application around its model: what the window shows, who else reaches it, and how it ends.
class Studio : public QObject {
    Q_OBJECT
    Q_PROPERTY(tavaro::OpenedProjects* projects READ projects CONSTANT)
    Q_PROPERTY(tavaro::RecorderDesk* recorder READ recorder CONSTANT)
    Q_PROPERTY(tavaro::ExportsDesk* exports READ exports CONSTANT)
    Q_PROPERTY(bool isClosed READ isClosed NOTIFY closedChanged) // the window; the program may go on
    Q_PROPERTY(bool beginsMinimized READ beginsMinimized CONSTANT)
    Q_PROPERTY(QString version READ version CONSTANT)

public:
    /// `place` is none where a program without windows has the application's, which it lets go of when it can.
    Studio(MainQueue& queue, std::optional<ApplicationInstance> place, bool beginsMinimized = false);

    Application& application() { return application_; }
    Library& library() { return library_; }
    RecorderDesk* recorder() { return &recorder_; }
    ExportsDesk* exports() { return &exports_; }
    AgentSettings& agentSettings() { return agentSettings_; }
    ConsentQuestions& consent() { return consent_; }
    UpdateCheck& updates() { return updates_; }
    SpeechSettings& speech() { return speech_; }
    OpenedProjects* projects() { return &projects_; }
    static QString version();

    bool isClosed() const { return isClosed_; }
    bool beginsMinimized() const { return beginsMinimized_; }
    /// Of what the program is started with: projects, movies, archives, and the page to show.
    void open(Start const& start);
    /// The window is gone: exports go on, a take is saved, and then the program ends, unless the window comes back.
    /// Where that loses what was edited last, it does come back once, and says why.
    Q_INVOKABLE void windowClosed();
    /// The window is wanted, perhaps again.
    Q_INVOKABLE void bringBack();
    /// The same as if it closed, without waiting for exports, and for what cannot be saved only a few seconds.
    void end();

Q_SIGNALS:
    /// The window is to come to the front.
    void raised();
    /// Its page "record" or "library" is to be shown.
    void placeWanted(QString const& place);
    /// As if its user closed the window.
    void closeWanted();
    void failed(QString const& sentence);
    void closedChanged();

private:
    /// A take that is saved; of one that an agent began only its place in the library.
    void show(QString const& take, QString const& startedBy);
    /// Agents and the user's commands reach the program that has the application's place.
    void takePlace();
    void askForPlace();
    void openToAgents();
    void openToStarts();
    void setClosed(bool isClosed);
    void look();
    void endUnlessThatLosesEdits();

    MainQueue& queue_;
    std::optional<ApplicationInstance> place_;
    Application application_;
    Library library_;
    RecorderDesk recorder_;
    ExportsDesk exports_;
    OpenedProjects projects_;
    AgentSettings agentSettings_;
    ConsentQuestions consent_;
    UpdateCheck updates_;
    SpeechSettings speech_;
    std::optional<AppMCPBackend> agents_;
    std::optional<SecondStart> starts_;
    SideQueue asking_; // for the place
    bool isAsking_ = false;
    bool const beginsMinimized_;
    QTimer look_; // now and then, at what other programs wrote, and whether it can end
    bool isClosed_ = false;
    bool isEnding_ = false;
    QDeadlineTimer saving_; // of what is open, at the end
};

}
