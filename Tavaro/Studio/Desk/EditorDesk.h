#pragma once

#include <Tavaro/Studio/Editor/EditorSession.h>
#include <Tavaro/Studio/Preview/FilmPreview.h>
#include <Tavaro/Studio/Preview/LookStills.h>
#include <Tavaro/Studio/Timeline/TimelineItem.h>
#include <Tavaro/Studio/Timeline/TimelineSteps.h>
#include <Tavaro/Studio/Voice/VoiceMeans.h>
#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Model/Privacy/PrivacyScanJob.h>
#endif

#include <QObject>
#include <QPointer>

#include <memory>
#include <optional>
#include <utility>

namespace tavaro {

class PrivacyDesk;
class VoiceDesk;

/// An open project in a window: its editor, its picture and its timeline, which show one moment and one selection. A
/// film that plays moves the playhead; a playhead that is moved moves the film. Belongs to the project's thread.
class EditorDesk final : public QObject {
    Q_OBJECT
    Q_PROPERTY(tavaro::EditorSession* session READ session CONSTANT)
    Q_PROPERTY(tavaro::FilmPreview* preview READ preview CONSTANT)
    Q_PROPERTY(bool loops READ loops WRITE setLoops NOTIFY loopsChanged)
    Q_PROPERTY(tavaro::LookStills* looks READ looks CONSTANT)
    Q_PROPERTY(QObject* voice READ voice CONSTANT)
    Q_PROPERTY(QObject* privacy READ privacy CONSTANT)
    Q_PROPERTY(QString time READ time NOTIFY timeChanged) // "0:04 / 1:20", of the whole film

public:
    EditorDesk(MainQueue& queue, std::shared_ptr<OpenProject> const& project);
    /// As above, played on what is given.
    EditorDesk(MainQueue& queue, std::shared_ptr<OpenProject> const& project, FilmPlayback::Means means);
    ~EditorDesk() override;

    EditorSession* session() { return &session_; }
    FilmPreview* preview() { return &preview_; }
    LookStills* looks() { return &looks_; }
    /// A `VoiceDesk`, made when it is first asked for.
    QObject* voice();
    /// Before it is asked for; else it hears and speaks by what this machine has.
    void setVoiceMeans(VoiceMeans means) { voiceMeans_ = std::move(means); }
    /// A `PrivacyDesk`, made when it is first asked for.
    QObject* privacy();
    /// Before it is asked for; else private text is found by the reader of this machine.
    void setMovieScan(MovieScan scan) { movieScan_ = std::move(scan); }
    QString time() const;
    /// Whether the marked span plays over and over, or the film where none is marked.
    bool loops() const { return loops_; }
    void setLoops(bool loops);

    /// The timeline shows this project from now on; null: none does.
    Q_INVOKABLE void showIn(tavaro::TimelineItem* timeline);
    Q_INVOKABLE void setDark(bool isDark);

Q_SIGNALS:
    void timeChanged();
    void loopsChanged();

private:
    void join();
    void follow(ProjectChange const& change);
    void followPlayback();
    void followPlayhead();
    void followSelection();
    void followLanes();
    void followRange();
    void take(TimelineIntent const& intent);
    void scrub(double time);
    void keepView();

    MainQueue& queue_;
    EditorSession session_;
    FilmPreview preview_;
    LookStills looks_;
    TimelineSteps steps_;
    std::optional<VoiceMeans> voiceMeans_;
    std::unique_ptr<VoiceDesk> voice_;
    MovieScan movieScan_;
    std::unique_ptr<PrivacyDesk> privacy_;
    QPointer<TimelineItem> timeline_;
    bool isDark_ = false, loops_ = false;
    // One side follows the other, which need not follow back: in the moment, and in what the timeline looks like.
    bool isFollowing_ = false, isKeeping_ = false;
    OpenProject::Observation observation_;
};

}
