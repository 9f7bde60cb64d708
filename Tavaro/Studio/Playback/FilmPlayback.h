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
    Q_PROPERTY(double volume READ volume WRITE setVolume NOTIFY volumeChanged)
    Q_PROPERTY(bool muted READ isMuted WRITE setMuted NOTIFY volumeChanged)
    Q_PROPERTY(bool scrubsAloud READ scrubsAloud WRITE setScrubsAloud NOTIFY scrubsAloudChanged)
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
    /// Of what is heard here, 0 to 1; the film's own is its tracks'.
    double volume() const { return volume_; }
    bool isMuted() const { return isMuted_; }
    /// Whether a film that is scrubbed is heard where it is.
    bool scrubsAloud() const { return scrubsAloud_; }
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
    /// Whatever plays from now on is that span over and over, the whole film for one without a length; none: it ends at
    /// its end. A film that plays goes on. A place outside of it that is sought plays on from there.
    void repeat(std::optional<TimeRange> const& span);
    /// A film that plays goes on there.
    Q_INVOKABLE void seek(double at);
    /// As `seek`, while the hand moves the playhead: a short sound tells where it is.
    void scrub(double at);
    void setVolume(double volume);
    void setMuted(bool isMuted);
    void setScrubsAloud(bool isAloud);
    /// 0.5 to 2; a film that plays goes on at that speed.
    Q_INVOKABLE void setSpeed(double speed);

Q_SIGNALS:
    /// Also now and then while it plays.
    void positionChanged();
    void durationChanged();
    void playingChanged();
    void speedChanged();
    void volumeChanged();
    void scrubsAloudChanged();
    void reportChanged();

private:
    void begin(double from);
    std::optional<TimeRange> repeated() const;
    void setPlaying(bool isPlaying);
    void takeReport();

    FilmClock clock_;
    double duration_ = 0;
    double speed_ = 1;
    bool isPlaying_ = false;
    double volume_ = 1;
    bool isMuted_ = false;
    bool scrubsAloud_ = true;
    std::optional<TimeRange> loop_;   // that plays
    std::optional<TimeRange> repeat_; // that is to play, as it was given
    SoundPlayer::Report report_;
    QTimer ticks_;
    SoundPlayer player_; // goes first: it reports to the rest
};

}
