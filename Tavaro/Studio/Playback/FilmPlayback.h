#pragma once

#include <Tavaro/Studio/Playback/FilmClock.h>
#include <Tavaro/Studio/Playback/SoundPlayer.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Values/TimeRange.h>

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <memory>
#include <optional>

namespace tavaro {

struct DemoProject;

/// A film's transport: where it is, whether it plays and how fast, and why it may not be heard. It belongs to the main
/// thread. Times are seconds of the whole output, title cards included.
class FilmPlayback : public QObject {
    Q_OBJECT
    Q_PROPERTY(double position READ position WRITE seek NOTIFY positionChanged)
    Q_PROPERTY(double duration READ duration NOTIFY durationChanged)
    Q_PROPERTY(bool playing READ isPlaying NOTIFY playingChanged)
    Q_PROPERTY(double speed READ speed WRITE setSpeed NOTIFY speedChanged)
    Q_PROPERTY(QString noSound READ noSound NOTIFY reportChanged)
    Q_PROPERTY(QStringList soundProblems READ soundProblems NOTIFY reportChanged)

public:
    /// What is played on, and by which time; what is not given is the user's sound server and the media clock.
    struct Means {
        std::unique_ptr<SoundOutput> output;
        FilmClock::Time time;
    };
    explicit FilmPlayback(ProjectPackage const& package);
    FilmPlayback(ProjectPackage const& package, Means means);
    ~FilmPlayback() override;

    FilmClock const& clock() const { return clock_; }
    double position() const { return clock_.position(); }
    double duration() const { return duration_; }
    bool isPlaying() const { return isPlaying_; }
    double speed() const { return speed_; }
    /// Why nothing is heard; empty when that is not so.
    QString noSound() const;
    /// What of the film's sound cannot be heard.
    QStringList soundProblems() const;

    /// Another revision; a film that plays goes on.
    void show(DemoProject const& project);
    /// At the end it begins anew.
    Q_INVOKABLE void play();
    Q_INVOKABLE void pause();
    Q_INVOKABLE void toggle();
    /// Plays from `start` to `end` over and over.
    Q_INVOKABLE void loop(double start, double end);
    /// A film that plays goes on there.
    Q_INVOKABLE void seek(double at);
    /// 0.5 to 2; a film that plays goes on at that speed.
    Q_INVOKABLE void setSpeed(double speed);

Q_SIGNALS:
    /// Also now and then while it plays.
    void positionChanged();
    void durationChanged();
    void playingChanged();
    void speedChanged();
    void reportChanged();

private:
    void begin(double from);
    void setPlaying(bool isPlaying);
    void takeReport();

    FilmClock clock_;
    double duration_ = 0;
    double speed_ = 1;
    bool isPlaying_ = false;
    std::optional<TimeRange> loop_;
    SoundPlayer::Report report_;
    QTimer ticks_;
    SoundPlayer player_; // goes first: it reports to the rest
};

}
