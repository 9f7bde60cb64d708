#include <TavaroMedia/Movie/MovieReader.h>

#include <algorithm>
#include <deque>

#include <TavaroMedia/Movie/Private/PictureDecoder.h>

namespace tavaro {

namespace {

/// The pictures right before the present one, without a gap, as many as there is room for.
class EarlierPictures {
public:
    explicit EarlierPictures(std::size_t room) : room_(room) {}

    void add(VideoFrame frame) {
        if (room_ == 0) return;
        bytes_ += bytesOf(frame);
        frames_.push_back(std::move(frame));
        while (bytes_ > room_) {
            bytes_ -= bytesOf(frames_.front());
            frames_.pop_front();
        }
    }
    void clear() {
        frames_.clear();
        bytes_ = 0;
    }
    /// The last one that starts at or before that time; none where one further back would.
    std::optional<VideoFrame> at(double time) const {
        auto const after = std::ranges::upper_bound(frames_, time, {}, &VideoFrame::presentationTime);
        if (after == frames_.begin()) return std::nullopt;
        return *(after - 1);
    }

private:
    static std::size_t bytesOf(VideoFrame const& frame) {
        std::size_t sum = 0;
        for (auto const* buffer : frame.picture().frame->buf) sum += buffer ? buffer->size : 0;
        return sum;
    }

    std::size_t room_;
    std::size_t bytes_ = 0;
    std::deque<VideoFrame> frames_;
};

}

struct MovieReader::State {
    PictureDecoder decoder;
    MovieInfo info;
    VideoFrame first;
    VideoFrame current; // on show
    VideoFrame next;    // the one after it; empty at the end
    EarlierPictures earlier;
    bool canSeek = true; // false for bare streams of pictures, which start over instead

    State(std::filesystem::path const& file, MovieReaderOptions const& options)
        : decoder(file, options)
        , first(decoder.readFirst())
        , current(first)
        , next(decoder.read())
        , earlier(options.earlierBytes) {
        info = decoder.describe();
        info.width = first.width();
        info.height = first.height();
    }

    VideoFrame frame(double seconds) {
        auto const within = seconds > 0 ? std::min(seconds, info.duration) : 0.0;
        auto const target = within + decoder.clock().rounding();
        if (isBefore(target, current)) {
            if (auto kept = earlier.at(target)) return *std::move(kept);
        }
        if (isBefore(target, current) || isFarAhead(target)) jump(target);
        while (!next.isEmpty() && !isBefore(target, next)) advance();
        return isBefore(target, current) ? first : current;
    }

    /// Of the last frame that can be on show then: a rounded one may be a tick later than it is shown.
    std::int64_t ticksAt(double target) const {
        return decoder.origin() + decoder.source().ticks(target) + (decoder.clock().rate() ? 1 : 0);
    }

    bool isFarAhead(double target) const {
        return !next.isEmpty() && canSeek && decoder.isSeekWorthwhile(ticksAt(target), next.picture().ticks);
    }

    static bool isBefore(double target, VideoFrame const& frame) { return target < frame.picture().time; }

    void advance() {
        earlier.add(std::move(current));
        current = std::move(next);
        next = decoder.read();
    }

    /// Puts `current` at or before `target`. A seek may come out after it: at a key frame that is decoded before and
    /// shown after the target, in a damaged stretch, or where the container only guesses. Each next try starts
    /// earlier, in growing steps, down to the movie's beginning.
    void jump(double target) {
        auto const& source = decoder.source();
        auto from = ticksAt(target);
        earlier.clear();
        for (double step = 0; canSeek && from > decoder.origin(); step = step > 0 ? 4 * step : 1) {
            canSeek = decoder.seek(from);
            if (canSeek && land(target)) return;
            auto const key = source.keyFrameBefore(from);
            from = std::min(key ? *key - 1 : from - 1, from - source.ticks(step));
        }
        if (canSeek && decoder.seek(decoder.origin()) && land(first.picture().time)) return;
        decoder.startOver();
        current = decoder.read();
        if (current.isEmpty()) current = first;
        next = decoder.read();
    }

    bool land(double target) {
        auto landed = decoder.read();
        if (landed.isEmpty() || isBefore(target, landed)) return false;
        current = std::move(landed);
        next = decoder.read();
        return true;
    }
};

MovieReader::MovieReader(std::filesystem::path const& file, MovieReaderOptions const& options)
    : state_(std::make_unique<State>(file, options)) {}
MovieReader::MovieReader(MovieReader&&) noexcept = default;
MovieReader& MovieReader::operator=(MovieReader&&) noexcept = default;
MovieReader::~MovieReader() = default;

MovieInfo const& MovieReader::info() const { return state_->info; }
VideoFrame MovieReader::frame(double seconds) { return state_->frame(seconds); }

}
