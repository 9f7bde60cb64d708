#include <TavaroCapture/Segments/Private/SegmentWriter.h>

#include <TavaroCapture/Segments/Private/StreamSegments.h>
#include <TavaroMedia/Movie/MovieWriter.h>

#include <atomic>
#include <mutex>
#include <optional>
#include <utility>

namespace tavaro {

namespace {

/// Frame times are sums of fractions; a frame this near to the limit has reached it.
constexpr double timeTolerance = 1e-6;

/// A take is edited: any moment of it is to be seen at once, which costs its frames from the last key frame on, some
/// three quarters of a millisecond each at 1080p even when nothing moves. One a second takes hardly more of the
/// encoder's time than one in two, and of a screen at rest some 80 kilobytes a second more.
int keyFrameInterval(int fps) { return fps; }

}

struct SegmentWriter::State {
    Options const options;
    StreamSegments segments;

    std::mutex lock; // of `writer`: one thread asks it for pictures while the appending one replaces it
    std::shared_ptr<MovieWriter> writer;
    double segmentStart = 0;
    std::optional<double> lastTime;

    std::atomic<double> publishedDuration = 0;
    std::atomic<std::int64_t> framesWritten = 0;
    std::atomic<std::int64_t> writerRejectedFrames = 0;

    explicit State(Options const& options) : options(options), segments(options.manifest, options.role) {}

    double frameSeconds() const { return 1.0 / options.fps; }
    std::shared_ptr<MovieWriter> opened(std::filesystem::path const& file) const;
    void rotate(double at);
    void close(std::shared_ptr<MovieWriter> segment, double endingAt);
};

SegmentWriter::SegmentWriter(Options const& options) : state_(std::make_unique<State>(options)) {
    options.manifest->enter(
        {.role = options.role, .codec = "h264", .width = options.width, .height = options.height, .fps = options.fps});
}

SegmentWriter::~SegmentWriter() = default;

void SegmentWriter::prepare() {
    writing([&] {
        state_->segments.manifest().write();
        state_->writer = state_->opened(state_->segments.openPath());
    });
}

std::shared_ptr<MovieWriter> SegmentWriter::State::opened(std::filesystem::path const& file) const {
    return std::make_shared<MovieWriter>(file, MovieWriterSettings{.container = MovieContainer::mov,
                                                                   .codec = MovieCodec::h264,
                                                                   .intent = MovieIntent::live,
                                                                   .width = options.width,
                                                                   .height = options.height,
                                                                   .fps = options.fps,
                                                                   .keyFrameInterval = keyFrameInterval(options.fps)});
}

void SegmentWriter::State::rotate(double at) {
    auto next = opened(segments.openPath(1));
    {
        std::lock_guard const guard(lock);
        std::swap(writer, next);
    }
    close(std::move(next), at);
    segmentStart = at;
}

void SegmentWriter::State::close(std::shared_ptr<MovieWriter> segment, double endingAt) {
    double const length = endingAt - segmentStart;
    segments.close(segmentStart, length, [segment = std::move(segment), length] { segment->finish(length); });
}

EncoderPicture SegmentWriter::picture() {
    std::lock_guard const guard(state_->lock);
    return state_->writer->picture();
}

bool SegmentWriter::append(EncoderPicture picture, double time) {
    auto& s = *state_;
    s.segments.rethrowFailure();
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
    if (auto writer = std::exchange(s.writer, nullptr); writer && s.lastTime)
        s.close(std::move(writer), *s.lastTime + s.frameSeconds());
    s.segments.wait();
}

std::vector<SegmentRecord> const& SegmentWriter::segments() const { return state_->segments.closed(); }
double SegmentWriter::duration() const { return state_->publishedDuration; }
std::int64_t SegmentWriter::framesWritten() const { return state_->framesWritten; }
std::int64_t SegmentWriter::writerRejectedFrames() const { return state_->writerRejectedFrames; }

}
