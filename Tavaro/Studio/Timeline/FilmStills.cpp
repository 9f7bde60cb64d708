#include <Tavaro/Studio/Timeline/FilmStills.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroMedia/Frames/FrameConverter.h>
#include <TavaroMedia/Movie/MovieReader.h>

#include <algorithm>
#include <cmath>
#include <list>
#include <utility>

namespace tavaro {

namespace {

constexpr std::size_t mostBytes = 48u << 20;
constexpr std::size_t mostFilms = 2;

/// The films that were looked at last, each with its decoder. On the queue.
class OpenFilms {
public:
    explicit OpenFilms(FilmStills::Place place) : place_(std::move(place)) {}

    QImage draw(FilmStill const& still) {
        try {
            converter_.convert(film(still.asset).frame(still.seconds()), image_);
        } catch (Error const&) {
            films_.remove_if([&](Film const& film) { return film.asset == still.asset; });
            return {};
        }
        QImage const whole(image_.row(0), image_.width(), image_.height(), image_.stride(), QImage::Format_RGBX8888);
        return whole.scaledToHeight(still.height, Qt::SmoothTransformation).convertToFormat(QImage::Format_RGB32);
    }

private:
    struct Film {
        std::string asset;
        MovieReader reader;
    };

    MovieReader& film(std::string const& asset) {
        auto const found = std::ranges::find(films_, asset, &Film::asset);
        if (found != films_.end()) {
            films_.splice(films_.begin(), films_, found);
        } else {
            films_.push_front({asset, MovieReader(place_(asset), {.threads = 1})});
            if (films_.size() > mostFilms) films_.pop_back();
        }
        return films_.front().reader;
    }

    FilmStills::Place place_;
    FrameConverter converter_;
    Image image_;
    std::list<Film> films_; // the last used first
};

}

std::int64_t FilmStill::momentFor(double seconds, double apart) {
    double const grid = std::exp2(std::max(0.0, std::floor(std::log2(std::max(apart, 1e-3) * momentsPerSecond))));
    return static_cast<std::int64_t>(std::max(0.0, std::floor(seconds * momentsPerSecond / grid)) * grid);
}

FilmStills::FilmStills(Place place, std::function<void()> onReady)
    : tiles_(
          "com.tavaro.timeline.stills", mostBytes,
          [films = std::make_shared<OpenFilms>(std::move(place))](FilmStill const& still) {
              return std::optional(films->draw(still));
          },
          std::move(onReady)) {}

QImage FilmStills::picture(FilmStill const& still) {
    if (auto const exact = tiles_.picture(still); !exact.isNull()) return exact;
    auto const near = tiles_.nearestBefore(still);
    return near && near->first.asset == still.asset && near->first.height == still.height ? near->second : QImage();
}

}
