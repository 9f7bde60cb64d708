#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Model/Jobs/SideQueue.h>
#include <Tavaro/Model/Voice/TranscriptionJob.h>
#endif
#include <Tavaro/Studio/Editor/RecordedProgress.h>
#include <Tavaro/Studio/Voice/VoiceMeans.h>

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <memory>
#include <vector>

namespace tavaro {

class EditorSession;
class MainQueue;

/// The speech of an editor's project as text: what can hear it, the job beside the window, and the words as they come.
/// What it makes is one step; whatever is edited meanwhile stays. Why it made nothing is its `failure`, a sentence.
class TranscriptionRun final : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isLooking READ isLooking NOTIFY changed)     // at what there is to hear with
    Q_PROPERTY(QVariantList engines READ engines NOTIFY changed) // {id, name, isReady, about}
    Q_PROPERTY(QString engine READ engine WRITE setEngine NOTIFY changed)
    Q_PROPERTY(QString locale READ locale WRITE setLocale NOTIFY changed)
    Q_PROPERTY(QVariantList tracks READ tracks NOTIFY changed) // {role, name} of those that have sound
    Q_PROPERTY(QString track READ track WRITE setTrack NOTIFY changed)
    Q_PROPERTY(bool canStart READ canStart NOTIFY changed)
    Q_PROPERTY(bool isRunning READ isRunning NOTIFY changed)
    Q_PROPERTY(bool isStopping READ isStopping NOTIFY changed)
    Q_PROPERTY(double progress READ progress NOTIFY changed) // 0…1; negative while that is not known
    Q_PROPERTY(QString state READ state NOTIFY changed)      // "0:12 of 1:40"
    Q_PROPERTY(QString heard READ heard NOTIFY changed)      // what was said last
    Q_PROPERTY(int words READ words NOTIFY changed)
    Q_PROPERTY(QString failure READ failure NOTIFY changed)
    Q_PROPERTY(QStringList remarks READ remarks NOTIFY changed)

public:
    TranscriptionRun(MainQueue& queue, EditorSession& session, VoiceMeans const& means);
    ~TranscriptionRun() override;

    /// Asks what there is, beside the window; `changed` follows.
    Q_INVOKABLE void look();
    bool isLooking() const { return isLooking_; }
    QVariantList engines() const;
    /// The chosen one, or else the best that is ready; empty where none is.
    QString engine() const;
    void setEngine(QString const& id);
    QString locale() const { return locale_; }
    void setLocale(QString const& locale);
    QVariantList tracks() const;
    QString track() const;
    void setTrack(QString const& role);

    bool canStart() const { return !isRunning() && !engine().isEmpty() && !tracks().isEmpty(); }
    Q_INVOKABLE void start();
    /// Comes to its end soon, and leaves the project as it was.
    Q_INVOKABLE void cancel();
    bool isRunning() const { return job_ != nullptr; }
    bool isStopping() const { return isStopping_; }
    double progress() const { return progress_.share(); }
    QString state() const { return progress_.words(); }
    QString heard() const { return heard_; }
    int words() const { return words_; }
    QString failure() const { return failure_; }
    QStringList remarks() const { return remarks_; }

Q_SIGNALS:
    void changed();

private:
    using TranscriptionTask = Job<MadeTranscript, TranscriptionProgress>;

    std::vector<AudioRole> roles() const;
    AudioRole role() const;
    void hear(TranscriptionProgress const& progress);
    void finish();

    MainQueue& queue_;
    EditorSession& session_;
    VoiceMeans const& means_;
    std::vector<TranscriptionEngine> engines_;
    QString engine_, locale_, track_; // as chosen; empty: as is best
    std::unique_ptr<TranscriptionTask> job_;
    RecordedProgress progress_; // of sound
    QString heard_, failure_;
    QStringList remarks_;
    int words_ = 0;
    bool isLooking_ = false, isStopping_ = false;
    SideQueue looking_;
};

}
