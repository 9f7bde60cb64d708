#pragma once

#include <Tavaro/Model/Recording/RecordingController.h>
#include <Tavaro/Studio/Recorder/RecorderDevices.h>
#include <Tavaro/Studio/Recorder/RecorderSources.h>

#include <QObject>
#include <QPointer>
#include <QTimer>

namespace tavaro {

class Application;

/// The recorder as windows show it: what is chosen, and the take from its countdown to the saved project, whoever began
/// it. A take that is thrown away is paused for some seconds, in which that can be undone, before it is removed; a
/// program that dies meanwhile leaves it as an unfinished recording. Main thread.
class RecorderModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(tavaro::RecorderSources* sources READ sources CONSTANT)
    Q_PROPERTY(tavaro::RecorderDevices* devices READ devices CONSTANT)
    Q_PROPERTY(bool isWatched READ isWatched WRITE setWatched NOTIFY watchedChanged)    // whether its page is shown
    Q_PROPERTY(int countdown READ countdown WRITE setCountdown NOTIFY countdownChanged) // before the next take
    Q_PROPERTY(bool scansTakes READ scansTakes WRITE setScansTakes NOTIFY scansTakesChanged) // for private text
    Q_PROPERTY(QString keys READ keys WRITE setKeys NOTIFY keysChanged) // that are logged: "all", "shortcuts", "none"
    Q_PROPERTY(tavaro::RecorderModel::Phase phase READ phase NOTIFY changed)
    Q_PROPERTY(bool isTaking READ isTaking NOTIFY changed) // there is a take that nobody has ended
    Q_PROPERTY(int countdownLeft READ countdownLeft NOTIFY changed)
    Q_PROPERTY(bool isAsking READ isAsking NOTIFY changed)      // the desktop asks what to share
    Q_PROPERTY(QString time READ time NOTIFY changed)           // of the take
    Q_PROPERTY(QString room READ room NOTIFY changed)           // on the disk; empty: plenty, or not known
    Q_PROPERTY(int roomMinutes READ roomMinutes NOTIFY changed) // below 0: not known
    Q_PROPERTY(qint64 lostFrames READ lostFrames NOTIFY changed)
    Q_PROPERTY(QString health READ health NOTIFY changed)       // what is wrong just now; empty: nothing
    Q_PROPERTY(QString startedBy READ startedBy NOTIFY changed) // empty: the user
    Q_PROPERTY(QString filming READ filming NOTIFY changed)     // what the take is of
    Q_PROPERTY(QStringList remarks READ remarks NOTIFY remarksChanged)
    Q_PROPERTY(QString failure READ failure NOTIFY failureChanged) // of the last recording; empty: none
    Q_PROPERTY(int undoSeconds READ undoSeconds NOTIFY changed)    // in which throwing away can be undone

public:
    enum Phase { Idle, Countdown, Recording, Paused, Finishing, ThrownAway };
    Q_ENUM(Phase)

    struct Settings {
        int undoSeconds = 8;
        int undoTick = 1000;                     // milliseconds
        std::chrono::milliseconds clearing{300}; // for windows to leave the picture, also where that is animated
        RecorderSources::Desktop desktop;
        LiveStills::Take still = smallStill;
    };
    static Settings usualSettings();

    RecorderModel(MainQueue& queue, Application& application, Settings settings = usualSettings());
    ~RecorderModel() override;

    RecorderSources* sources() { return &sources_; }
    RecorderDevices* devices() { return &devices_; }
    bool isWatched() const { return isWatched_; }
    void setWatched(bool isWatched);
    int countdown() const;
    void setCountdown(int seconds);
    bool scansTakes() const;
    void setScansTakes(bool scans);
    QString keys() const;
    void setKeys(QString const& keys);

    Phase phase() const { return shown_.phase; }
    bool isTaking() const { return phase() == Recording || phase() == Paused; }
    int countdownLeft() const { return shown_.countdownLeft; }
    /// The take begins in a moment: what is not to be in it goes now.
    bool isClearing() const { return phase() == Countdown && countdownLeft() == 0 && !isAsking(); }
    bool isAsking() const { return shown_.isAsking; }
    QString const& time() const { return shown_.time; }
    QString room() const;
    int roomMinutes() const { return shown_.roomMinutes; }
    qint64 lostFrames() const { return shown_.lostFrames; }
    QString const& health() const { return shown_.health; }
    QString const& startedBy() const { return shown_.startedBy; }
    QString const& filming() const { return shown_.filming; }
    QStringList const& remarks() const { return remarks_; }
    QString const& failure() const { return failure_; }
    int undoSeconds() const { return shown_.undoSeconds; }

    // Orders that do not fit do nothing, since what was pressed may have changed meanwhile.
    /// Begins what is chosen.
    Q_INVOKABLE void record();
    /// A take that ends by itself after so many seconds, without a countdown.
    Q_INVOKABLE void recordFor(double seconds);
    Q_INVOKABLE void togglePause();
    Q_INVOKABLE void stop();
    /// Begins, or ends the take, or the countdown.
    Q_INVOKABLE void toggle();
    Q_INVOKABLE void throwAway();
    /// The take is there again, paused.
    Q_INVOKABLE void undoThrowAway();
    Q_INVOKABLE void forgetFailure();

    /// Those that work it from anywhere, for no take's log.
    void setShortcuts(std::vector<Chord> shortcuts) { recorder().setOwnShortcuts(std::move(shortcuts)); }
    /// Makes room for another take, or another order: one that was thrown away is removed first.
    void settle(std::function<void()> next);
    /// Where the take's picture comes from on the desktop; none where nothing that lies above it is in the picture.
    std::optional<PixelRect> filmedPlace() const;

Q_SIGNALS:
    void watchedChanged();
    void countdownChanged();
    void keysChanged();
    void scansTakesChanged();
    void changed();
    void remarksChanged();
    void failureChanged();
    /// What its user should know of a take that is saved, but for what was said before it began.
    void remarked(QString const& sentences);
    /// A take is saved as this project; `startedBy` is empty where its user began it.
    void saved(QString const& path, QString const& startedBy);

private:
    struct Shown {
        Phase phase = Idle;
        int countdownLeft = 0;
        bool isAsking = false;
        QString time = QStringLiteral("0:00");
        int roomMinutes = -1;
        qint64 lostFrames = 0;
        QString health = {}, startedBy = {}, filming = {};
        int undoSeconds = 0;
        bool operator==(Shown const&) const = default;
    };

    RecordingController& recorder() const;
    void begin(RecordingRequest request);
    void follow(RecorderState const& state);
    void noteBegin();
    void noteEnd(RecordingOutcome const& outcome);
    void tellRemarks(RecordingOutcome const& outcome);
    Shown shownOf(RecorderState const& state) const;
    void show(Shown const& shown);
    void refresh();
    void tickUndo();
    void noteRoom();
    void fail(QString const& sentence);

    MainQueue& queue_;
    Application& application_;
    Settings const settings_;
    RecorderSources sources_;
    RecorderDevices devices_;
    bool isWatched_ = false;
    bool isRefreshing_ = false;
    double bytesPerSecond_;          // of a take, as of the last one
    int roomMinutes_ = -1;           // for a take that has not begun
    bool isUnderWay_ = false;        // a recording is, as far as was noted
    std::function<void()> starting_; // a recording waits for this, while devices are let go of
    int undoLeft_ = 0;               // seconds; 0: nothing is thrown away
    Shown shown_;
    QStringList remarks_;
    QString failure_;
    QTimer refresh_, undo_;
    RecordingController::Observation observation_;
};

}
