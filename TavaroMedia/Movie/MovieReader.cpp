#include <TavaroMedia/Movie/MovieReader.h>

#include <algorithm>

#include <TavaroMedia/Movie/Private/PictureDecoder.h>

namespace tavaro {

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

    VideoFrame frame(double seconds) {
        auto const within = seconds > 0 ? std::min(seconds, info.duration) : 0.0;
        auto const target = within + decoder.clock().rounding();
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
        current = std::move(next);
        next = decoder.read();
    }

    /// Puts `current` at or before `target`. A seek may come out after it: at a key frame that is decoded before and
    /// shown after the target, in a damaged stretch, or where the container only guesses. Each next try starts
    /// earlier, in growing steps, down to the movie's beginning.
    void jump(double target) {
        auto const& source = decoder.source();
        auto from = ticksAt(target);
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
