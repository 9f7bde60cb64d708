#include <TavaroCapture/Segments/Private/SegmentWriter.h>

#include <TavaroCapture/Segments/RecordingManifest.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Movie/MovieWriter.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <atomic>
#include <exception>
#include <mutex>
#include <optional>
#include <utility>

namespace tavaro {

namespace {

/// Frame times are sums of fractions; a frame this near to the limit has reached it.
constexpr double timeTolerance = 1e-6;

[[noreturn]] void failWriting(std::string const& detail) {
    throw CaptureError(CaptureError::Kind::writeFailed, "Could not write the recording: " + detail + ".");
}

/// Runs a step of writing, and gives its failures the recording's own words.
template<class Step> auto writing(Step step) {
    try {
        return step();
    } catch (MediaError const& error) {
        failWriting(error.detail());
    } catch (FileError const& error) {
        std::string detail = error.what();
        if (detail.ends_with('.')) detail.pop_back();
        failWriting(detail);
    }
}

}

struct SegmentWriter::State {
    Options const options;
    RecordingManifest manifest;

    std::mutex lock; // of `writer`: one thread asks it for pictures while the appending one replaces it
    std::shared_ptr<MovieWriter> writer;
    double segmentStart = 0;
    std::optional<double> lastTime;

    std::atomic<double> publishedDuration = 0;
    std::atomic<std::int64_t> framesWritten = 0;
    std::atomic<std::int64_t> writerRejectedFrames = 0;

    std::mutex failureLock;
    std::exception_ptr failure; // of a finish in the background
    SerialQueue backgroundQueue{"com.tavaro.segments"};

    explicit State(Options options) : options(std::move(options)) {}

    double frameSeconds() const { return 1.0 / options.fps; }
    std::shared_ptr<MovieWriter> openSegment(std::int64_t index) const;
    void rotate(double at);
    void close(std::shared_ptr<MovieWriter> segment, double endingAt);
    void inBackground(std::function<void()> step);
    void rethrowFailure();
};

SegmentWriter::SegmentWriter(Options options) : state_(std::make_unique<State>(std::move(options))) {
    auto& s = *state_;
    s.manifest.recordingID = s.options.recordingID;
    s.manifest.createdAt = Date::now();
    s.manifest.width = s.options.width;
    s.manifest.height = s.options.height;
    s.manifest.fps = s.options.fps;
}

SegmentWriter::~SegmentWriter() = default;

void SegmentWriter::prepare() {
    writing([&] {
        writeManifest(state_->options.directory, state_->manifest);
        state_->writer = state_->openSegment(0);
    });
}

std::shared_ptr<MovieWriter> SegmentWriter::State::openSegment(std::int64_t index) const {
    return std::make_shared<MovieWriter>(options.directory / segmentFileName(index),
                                         MovieWriterSettings{.container = MovieContainer::mov,
                                                             .codec = MovieCodec::h264,
                                                             .intent = MovieIntent::live,
                                                             .width = options.width,
                                                             .height = options.height,
                                                             .fps = options.fps});
}

void SegmentWriter::State::rotate(double at) {
    auto next = openSegment(static_cast<std::int64_t>(manifest.segments.size()) + 1);
    {
        std::lock_guard const guard(lock);
        std::swap(writer, next);
    }
    close(std::move(next), at);
    segmentStart = at;
}

/// The manifest lists the segment at once; its movie is finished while the next one already records.
void SegmentWriter::State::close(std::shared_ptr<MovieWriter> segment, double endingAt) {
    auto const index = static_cast<std::int64_t>(manifest.segments.size());
    double const length = endingAt - segmentStart;
    manifest.segments.push_back({index, segmentFileName(index), segmentStart, length});
    inBackground([this, segment = std::move(segment), length, manifest = manifest] {
        segment->finish(length);
        writeManifest(options.directory, manifest);
    });
}

void SegmentWriter::State::inBackground(std::function<void()> step) {
    backgroundQueue.async([this, step = std::move(step)] {
        try {
            writing(step);
        } catch (...) {
            std::lock_guard const guard(failureLock);
            if (!failure) failure = std::current_exception();
        }
    });
}

void SegmentWriter::State::rethrowFailure() {
    std::lock_guard const guard(failureLock);
    if (failure) std::rethrow_exception(failure);
}

EncoderPicture SegmentWriter::picture() {
    std::lock_guard const guard(state_->lock);
    return state_->writer->picture();
}

bool SegmentWriter::append(EncoderPicture picture, double time) {
    auto& s = *state_;
    s.rethrowFailure();
    return writing([&] {
        if (time - s.segmentStart >= s.options.segmentDuration - timeTolerance && s.lastTime) s.rotate(time);
        try {
            s.writer->append(std::move(picture), time - s.segmentStart);
        } catch (MediaError const& error) {
            if (error.kind() != MediaError::Kind::refused) throw;
            ++s.writerRejectedFrames;
            return false;
        }
        s.lastTime = time;
        ++s.framesWritten;
        s.publishedDuration = time + s.frameSeconds();
        return true;
    });
}

void SegmentWriter::finish() {
    auto& s = *state_;
    if (s.writer) s.close(std::exchange(s.writer, nullptr), s.lastTime.value_or(s.segmentStart) + s.frameSeconds());
    s.manifest.isComplete = true;
    s.inBackground([&s] { writeManifest(s.options.directory, s.manifest); });
    s.backgroundQueue.sync([] {});
    s.rethrowFailure();
}

std::vector<SegmentRecord> const& SegmentWriter::segments() const { return state_->manifest.segments; }
double SegmentWriter::duration() const { return state_->publishedDuration; }
std::int64_t SegmentWriter::framesWritten() const { return state_->framesWritten; }
std::int64_t SegmentWriter::writerRejectedFrames() const { return state_->writerRejectedFrames; }

}
