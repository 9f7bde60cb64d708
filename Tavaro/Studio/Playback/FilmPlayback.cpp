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
    , player_(package, clock_, completed(std::move(given)).output, [this] {
        QMetaObject::invokeMethod(
            this, [this] { takeReport(); }, Qt::QueuedConnection);
    }) {
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

void FilmPlayback::play() {
    if (isPlaying_ || duration_ <= 0) return;
    begin(position() >= duration_ - nearEnd ? 0 : position());
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
