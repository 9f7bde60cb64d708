#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Model/Application/Application.h>
#endif

#include <QObject>
#include <QString>
#include <QVariantList>

namespace tavaro {

/// The recorder as the window shows and orders it: what can be recorded, what is recorded with it, and the take that is
/// under way, whoever began it. Belongs to the main queue.
class RecorderPanel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QVariantList sources READ sources NOTIFY sourcesChanged)
    Q_PROPERTY(QString limits READ limits NOTIFY sourcesChanged)
    Q_PROPERTY(bool hasMicrophone READ hasMicrophone NOTIFY sourcesChanged)
    Q_PROPERTY(bool hasSystemSound READ hasSystemSound NOTIFY sourcesChanged)
    Q_PROPERTY(bool hasCamera READ hasCamera NOTIFY sourcesChanged)
    Q_PROPERTY(bool microphone READ microphone WRITE setMicrophone NOTIFY choicesChanged)
    Q_PROPERTY(bool systemSound READ systemSound WRITE setSystemSound NOTIFY choicesChanged)
    Q_PROPERTY(bool camera READ camera WRITE setCamera NOTIFY choicesChanged)
    Q_PROPERTY(QString phase READ phase NOTIFY changed)
    Q_PROPERTY(QString time READ time NOTIFY changed)
    Q_PROPERTY(QString note READ note NOTIFY changed)
    Q_PROPERTY(bool isOurs READ isOurs NOTIFY changed)

public:
    explicit RecorderPanel(Application& application);

    /// Records with "kind" (display, window), "id", "name", "detail".
    QVariantList const& sources() const { return sources_; }
    /// What this desktop cannot give, as sentences.
    QString const& limits() const { return limits_; }
    bool hasMicrophone() const { return found_.hasMicrophone; }
    bool hasSystemSound() const { return found_.hasSystemSound; }
    bool hasCamera() const { return found_.hasCamera; }
    bool microphone() const;
    bool systemSound() const;
    bool camera() const;
    void setMicrophone(bool isRecorded);
    void setSystemSound(bool isRecorded);
    void setCamera(bool isRecorded);

    /// "idle", "countdown", "recording", "paused", "finishing".
    QString const& phase() const { return shown_.phase; }
    /// Of the take; in the countdown, the seconds left of it.
    QString const& time() const { return shown_.time; }
    /// What somebody who records should know now: the room on the disk, lost pictures, sounds that are away.
    QString const& note() const { return shown_.note; }
    /// False for a take that an agent began.
    bool isOurs() const { return shown_.isOurs; }

    Q_INVOKABLE void look();
    Q_INVOKABLE void start(QString const& kind, QString const& id);
    Q_INVOKABLE void pause();
    Q_INVOKABLE void resume();
    Q_INVOKABLE void stop();
    Q_INVOKABLE void discard();

Q_SIGNALS:
    void sourcesChanged();
    void choicesChanged();
    void changed();
    void failed(QString const& sentence);
    void saved(QString const& package);

private:
    struct Found {
        bool hasMicrophone = false;
        bool hasSystemSound = false;
        bool hasCamera = false;
    };
    struct Shown {
        QString phase = QStringLiteral("idle");
        QString time;
        QString note;
        bool isOurs = false;
        bool operator==(Shown const&) const = default;
    };

    void list(SourceList const& sources);
    RecordingRequest request(QString const& kind, QString const& id);
    void over(RecordingOutcome const& outcome);
    void show(RecorderState const& state);
    template<class Work> void attempt(Work const& work);
    void choose(Preference<bool> const& preference, bool isRecorded);

    Application& application_;
    QVariantList sources_;
    QString limits_;
    Found found_;
    Shown shown_;
    bool isOurs_ = false;
    RecordingController::Observation observation_;
    Preferences::Observation choices_;
};

/// What somebody who records should know, in the order of its weight; empty where all is well.
QString noteOf(RecorderProgress const& take);

}
