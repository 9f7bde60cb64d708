#include <TavaroCapture/Recorder/Private/CameraStream.h>

#include <TavaroCapture/Events/Private/TakeClock.h>
#include <TavaroCapture/Segments/Private/StreamSegments.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace tavaro {

CameraStream::CameraStream(std::unique_ptr<CameraSource> source, TakeClock const& clock,
                           SideStreamOptions const& options)
    : source_(std::move(source))
    , clock_(clock)
    , role_(options.role)
    , manifest_(options.manifest)
    , writer_({.manifest = options.manifest,
               .role = options.role,
               .width = static_cast<int>(source_->size().width),
               .height = static_cast<int>(source_->size().height),
               .fps = source_->fps(),
               .segmentDuration = options.segmentSeconds})
    , mostUnderWay_(std::max(source_->fps() / 2, 2)) {
    writer_.prepare();
}

void CameraStream::start() {
    source_->start({.picture = [this](CapturedPicture const& picture) { take(picture); },
                    .lost = [this](double since) { absences_.begin(clock_.elapsed(since)); },
                    .returned = [this](double at) { absences_.end(clock_.elapsed(at)); },
                    .missed = [this](std::int64_t count) { noteMissed(count); }});
}

void CameraStream::stop() {
    source_->stop();
    queue_.sync([] {});
}

void CameraStream::noteMissed(std::int64_t count) {
    if (clock_.place(mediaClockNow())) missed_ += count;
}

/// A picture for which the encoder has no time is left out; the one before it lasts longer.
void CameraStream::take(CapturedPicture const& captured) {
    auto const time = clock_.place(captured.capturedAt);
    if (!time) return;
    if (underWay_ >= mostUnderWay_) {
        ++missed_;
        return;
    }
    auto const picture = std::make_shared<EncoderPicture>(writer_.picture());
    fillPicture(*picture, captured.picture);
    ++underWay_;
    queue_.async([this, picture, time = *time] {
        write(std::move(*picture), time);
        --underWay_;
    });
}

void CameraStream::write(EncoderPicture picture, double time) {
    if (failure_) return;
    try {
        append(std::move(picture), time);
    } catch (CaptureError const& error) {
        failure_ = error.what();
    }
}

void CameraStream::append(EncoderPicture picture, double time) {
    if (!offset_) {
        offset_ = time;
        manifest_->enter(role_, time);
        writing([&] { manifest_->write(); });
    }
    // A camera's stamps may go back where it was opened anew.
    if (lastTime_ && time <= *lastTime_) return;
    lastTime_ = time;
    writer_.append(std::move(picture), time - *offset_);
}

std::optional<std::string> CameraStream::lossSentence() const {
    constexpr double noticeableLoss = 0.005;
    auto const missed = static_cast<double>(missed_);
    double const all = static_cast<double>(writer_.framesWritten()) + missed;
    if (all < 1 || missed / all < noticeableLoss) return std::nullopt;
    return fmt::format("{:.0f} pictures of the {} ({:.1f}%) were lost or damaged; the one before each stays longer.",
                       missed, spokenName(role_), 100 * missed / all);
}

std::vector<double> CameraStream::interruptedAt() const {
    return writer_.framesWritten() > 0 ? absences_.beginnings() : std::vector<double>();
}

std::vector<std::string> CameraStream::finish() {
    queue_.sync([this] {
        try {
            if (!failure_) writer_.finish();
        } catch (CaptureError const& error) {
            failure_ = error.what();
        }
    });
    if (failure_) return {fmt::format("The {} ended early. {}", spokenName(role_), *failure_)};
    if (writer_.framesWritten() == 0) return {}; // the take's health says so
    std::vector<std::string> warnings;
    for (auto const& sentence : {absences_.sentence(role_), lossSentence()})
        if (sentence) warnings.push_back(*sentence);
    return warnings;
}

}
