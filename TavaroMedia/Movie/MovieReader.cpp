#include <TavaroMedia/Movie/MovieReader.h>

#include <algorithm>

#include <TavaroMedia/Movie/Private/PictureDecoder.h>

namespace tavaro {

namespace {

// Coarse clocks round a frame's time by up to half a tick (half a millisecond in Matroska), which must not make
// the frame late; where the clock is the frame count itself, half a tick would be half a frame.
constexpr double largestRounding = 0.0005;

}

struct MovieReader::State {
    PictureDecoder decoder;
    MovieInfo info;
    VideoFrame first;
    VideoFrame current;  // on show
    VideoFrame next;     // the one after it; empty at the end
    bool canSeek = true; // false for bare streams of pictures, which start over instead

    State(std::filesystem::path const& file, MovieReaderOptions const& options)
        : decoder(file, options)
        , first(decoder.readFirst())
        , current(first)
        , next(decoder.read()) {
        info = decoder.describe();
        info.width = first.width();
        info.height = first.height();
    }

    std::int64_t ticksAt(double seconds) const {
        auto const& source = decoder.source();
        auto const rounding = std::min(source.seconds(1) / 2, largestRounding) + 1e-6;
        auto const within = seconds > 0 ? std::min(seconds, info.duration) : 0.0;
        return decoder.origin() + source.ticks(within + rounding);
    }

    VideoFrame frame(double seconds) {
        auto const target = ticksAt(seconds);
        if (isBefore(target, current) || isFarAhead(target)) jump(target);
        while (!next.isEmpty() && !isBefore(target, next)) advance();
        return isBefore(target, current) ? first : current;
    }

    bool isFarAhead(std::int64_t target) const {
        return !next.isEmpty() && canSeek && decoder.isSeekWorthwhile(target, next.picture().ticks);
    }

    static bool isBefore(std::int64_t ticks, VideoFrame const& frame) { return ticks < frame.picture().ticks; }

    void advance() {
        current = std::move(next);
        next = decoder.read();
    }

    /// Puts `current` at or before `target`. A seek may come out after it: at a key frame that is decoded before and
    /// shown after the target, in a damaged stretch, or where the container only guesses. Each next try starts
    /// earlier, in growing steps, down to the movie's beginning.
    void jump(std::int64_t target) {
        auto const& source = decoder.source();
        auto from = target;
        for (double step = 0; canSeek && from > decoder.origin(); step = step > 0 ? 4 * step : 1) {
            canSeek = decoder.seek(from);
            if (canSeek && land(target)) return;
            auto const key = source.keyFrameBefore(from);
            from = std::min(key ? *key - 1 : from - 1, from - source.ticks(step));
        }
        if (canSeek && decoder.seek(decoder.origin()) && land(first.picture().ticks)) return;
        decoder.startOver();
        current = decoder.read();
        if (current.isEmpty()) current = first;
        next = decoder.read();
    }

    bool land(std::int64_t target) {
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
