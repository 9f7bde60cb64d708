#include <Tavaro/Studio/Playback/FilmPlayback.h>

#include <Tavaro/Studio/Playback/PulseOutput.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavaro {

namespace {

constexpr int tickMilliseconds = 33;
constexpr double slowest = 0.5;
constexpr double fastest = 2;
constexpr double nearEnd = 1e-3; // seconds; from there playing begins anew

FilmPlayback::Means completed(FilmPlayback::Means means) {
    if (!means.output) means.output = std::make_unique<PulseOutput>();
    if (!means.time) means.time = mediaClockNow;
    return means;
}

double lengthOf(DemoProject const& project) {
    double const duration = project.presentationDuration();
    return std::isfinite(duration) ? std::max(duration, 0.0) : 0;
}

}

FilmPlayback::FilmPlayback(ProjectPackage const& package) : FilmPlayback(package, Means{}) {}

FilmPlayback::FilmPlayback(ProjectPackage const& package, Means given)
    : clock_(given.time ? given.time : mediaClockNow)
    , player_(package, clock_, completed(std::move(given)).output,
              [this] { QMetaObject::invokeMethod(this, &FilmPlayback::takeReport, Qt::QueuedConnection); }) {
    ticks_.setInterval(tickMilliseconds);
    connect(&ticks_, &QTimer::timeout, this, &FilmPlayback::positionChanged);
}

FilmPlayback::~FilmPlayback() = default;

QString FilmPlayback::noSound() const { return QString::fromStdString(report_.noSound.value_or("")); }

QStringList FilmPlayback::soundProblems() const {
    QStringList sentences;
    for (auto const& sentence : report_.soundProblems) sentences.push_back(QString::fromStdString(sentence));
    return sentences;
}

void FilmPlayback::show(DemoProject const& project) {
    player_.show(project);
    double const length = lengthOf(project);
    if (std::exchange(duration_, length) == length) return;
    if (isPlaying_) player_.moveEnd(loop_ ? std::min(loop_->end(), length) : length);
    Q_EMIT durationChanged();
    if (!isPlaying_ && position() > length) seek(length);
}

void FilmPlayback::begin(double from) {
    Passage passage{.from = from, .end = duration_, .speed = speed_};
    if (loop_) {
        passage.start = loop_->start;
        passage.end = std::min(loop_->end(), duration_);
        passage.atEnd = Passage::AtEnd::repeat;
    }
    player_.play(passage);
    setPlaying(true);
}

void FilmPlayback::setPlaying(bool isPlaying) {
    if (isPlaying)
        ticks_.start();
    else
        ticks_.stop();
    bool const wasPlaying = std::exchange(isPlaying_, isPlaying);
    Q_EMIT positionChanged();
    if (wasPlaying != isPlaying) Q_EMIT playingChanged();
}

/// What is to play over and over, as far as the film has it.
std::optional<TimeRange> FilmPlayback::repeated() const {
    if (!repeat_) return std::nullopt;
    if (repeat_->duration <= 0) return TimeRange{0, duration_};
    double const first = std::clamp(repeat_->start, 0.0, duration_), last = std::clamp(repeat_->end(), 0.0, duration_);
    return last > first ? std::optional(TimeRange{first, last - first}) : std::nullopt;
}

void FilmPlayback::play() {
    if (isPlaying_ || duration_ <= 0) return;
    loop_ = repeated();
    if (loop_) return begin(loop_->contains(position()) ? position() : loop_->start);
    begin(position() >= duration_ - nearEnd ? 0 : position());
}

void FilmPlayback::repeat(std::optional<TimeRange> const& span) {
    if (std::exchange(repeat_, span) == span || !isPlaying_) return;
    loop_ = repeated();
    begin(!loop_ || loop_->contains(position()) ? position() : loop_->start);
}

void FilmPlayback::pause() {
    if (!isPlaying_) return;
    player_.stop();
    loop_.reset();
    setPlaying(false);
}

void FilmPlayback::toggle() {
    if (isPlaying_)
        pause();
    else
        play();
}

void FilmPlayback::loop(double start, double end) {
    double const first = std::clamp(std::min(start, end), 0.0, duration_);
    double const last = std::clamp(std::max(start, end), 0.0, duration_);
    if (!(last > first)) return;
    loop_ = TimeRange{first, last - first};
    begin(first);
}

void FilmPlayback::seek(double at) {
    if (!std::isfinite(at)) return;
    at = std::clamp(at, 0.0, duration_);
    if (loop_ && (at < loop_->start || at >= loop_->end())) loop_.reset();
    if (isPlaying_) return begin(at);
    clock_.hold(at);
    Q_EMIT positionChanged();
}

void FilmPlayback::scrub(double at) {
    seek(at);
    if (scrubsAloud_ && !isPlaying_) player_.scrub(position());
}

void FilmPlayback::setVolume(double volume) {
    if (!std::isfinite(volume)) return;
    volume = std::clamp(volume, 0.0, 1.0);
    if (std::exchange(volume_, volume) == volume) return;
    player_.setVolume(isMuted_ ? 0 : volume_);
    Q_EMIT volumeChanged();
}

void FilmPlayback::setMuted(bool isMuted) {
    if (std::exchange(isMuted_, isMuted) == isMuted) return;
    player_.setVolume(isMuted_ ? 0 : volume_);
    Q_EMIT volumeChanged();
}

void FilmPlayback::setScrubsAloud(bool isAloud) {
    if (std::exchange(scrubsAloud_, isAloud) == isAloud) return;
    Q_EMIT scrubsAloudChanged();
}

void FilmPlayback::setSpeed(double speed) {
    if (!std::isfinite(speed)) return;
    speed = std::clamp(speed, slowest, fastest);
    if (std::exchange(speed_, speed) == speed) return;
    if (isPlaying_) begin(position());
    Q_EMIT speedChanged();
}

void FilmPlayback::takeReport() {
    auto report = player_.report();
    bool const hasEnded = report.hasEnded && isPlaying_;
    report_ = std::move(report);
    Q_EMIT reportChanged();
    if (!hasEnded) return;
    loop_.reset();
    setPlaying(false);
}

}
