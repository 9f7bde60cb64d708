#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Model/Privacy/PrivacyScanJob.h>
#include <Tavaro/Model/Project/OpenProject.h>
#endif
#include <Tavaro/Studio/Editor/RecordedProgress.h>

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace tavaro {

class EditorSession;
class MainQueue;

/// The search for private text in an editor's project: the job beside the window, how far it is, what it found. What it
/// found, also until it was stopped, is one step; whatever is edited meanwhile stays. Why it could not look is its
/// `failure`, a sentence.
class ScanRun final : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool canStart READ canStart NOTIFY changed)
    Q_PROPERTY(bool isRunning READ isRunning NOTIFY changed)
    Q_PROPERTY(bool isStopping READ isStopping NOTIFY changed)
    Q_PROPERTY(double progress READ progress NOTIFY changed) // 0…1; negative while that is not known
    Q_PROPERTY(QString state READ state NOTIFY changed)      // "0:12 of 1:40"
    Q_PROPERTY(int found READ found NOTIFY changed)          // by this run, as yet
    Q_PROPERTY(QString failure READ failure NOTIFY changed)
    Q_PROPERTY(QString result READ result NOTIFY changed)       // of the run that ended last, a sentence
    Q_PROPERTY(QStringList remarks READ remarks NOTIFY changed) // about patterns that cannot be used
    Q_PROPERTY(bool wasScanned READ wasScanned NOTIFY changed)
    Q_PROPERTY(bool isWhole READ isWhole NOTIFY changed)      // whether everything was looked at, as is asked for now
    Q_PROPERTY(QString lastScan READ lastScan NOTIFY changed) // when that was, and what it left out: sentences
    Q_PROPERTY(QString looksFor READ looksFor NOTIFY changed) // "Emails, card numbers and 2 words of your own"

public:
    /// A scan that is given stands in for the real one.
    ScanRun(MainQueue& queue, EditorSession& session, MovieScan scan);
    ~ScanRun() override;

    bool canStart() const;
    /// Of what was not looked at, or of everything where nothing is left.
    Q_INVOKABLE void start();
    /// Comes to its end soon; what was found stays.
    Q_INVOKABLE void stop();
    bool isRunning() const { return job_ != nullptr; }
    bool isStopping() const { return isStopping_; }
    double progress() const { return progress_.share(); }
    QString state() const { return progress_.words(); }
    int found() const { return found_; }
    QString failure() const { return failure_; }
    QString result() const { return result_; }
    QStringList remarks() const { return remarks_; }
    bool wasScanned() const;
    bool isWhole() const { return missing_.isEmpty() && wasScanned(); }
    QString lastScan() const;
    QString looksFor() const;

Q_SIGNALS:
    void changed();

private:
    using ScanTask = Job<MadePrivacyScan, ScanProgress>;

    void follow();
    void checkPatterns();
    QStringList missingSpans() const;
    void finish();
    void keep(MadePrivacyScan const& made);

    MainQueue& queue_;
    EditorSession& session_;
    MovieScan scan_;
    std::unique_ptr<ScanTask> job_;
    RecordedProgress progress_;
    int found_ = 0;
    QString failure_, result_;
    std::optional<RedactionSettings> checked_; // whose patterns the remarks are about
    QStringList remarks_;
    QStringList missing_; // spans of the film that were not looked at
    bool isStopping_ = false;
    OpenProject::Observation observation_;
};

}
