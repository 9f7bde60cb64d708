#include <Tavaro/Studio/Timeline/SoundWaves.h>

#include <TavaroCore/Errors/Error.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

namespace tavaro {

namespace {

constexpr std::size_t mostTileBytes = 48u << 20;
constexpr std::uintmax_t mostFolderBytes = 256u << 20;

/// Half of a tile's height for a peak, 0…1.
double loudness(int peak) { return std::pow(std::clamp(std::abs(peak) / 32767.0, 0.0, 1.0), 0.6); }

/// How much of the pixel from y to y + 1 a line from `top` to `bottom` covers.
double covered(double y, double top, double bottom) {
    return std::clamp(std::min(bottom, y + 1) - std::max(top, y), 0.0, 1.0);
}

}

int WaveTile::scaleFor(double secondsPerPixel) {
    return static_cast<int>(std::floor(2 * std::log2(std::clamp(secondsPerPixel, 1e-6, 1e6)) + 1e-9));
}

double WaveTile::secondsPerPixel() const { return std::exp2(scale / 2.0); }

QImage drawWave(PeakPyramid const& sound, WaveTile const& tile) {
    QImage picture(WaveTile::width, tile.height, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    auto const peaks = sound.peaks(tile.start(), tile.secondsPerPixel(), WaveTile::width);
    auto const color = QColor::fromRgba(tile.color);
    double const middle = tile.height / 2.0;
    for (int x = 0; x < WaveTile::width; ++x) {
        // Silence is a thin line.
        double const up = std::max(loudness(std::max<int>(peaks[x].high, 0)) * (middle - 1), 0.5);
        double const down = std::max(loudness(std::min<int>(peaks[x].low, 0)) * (middle - 1), 0.5);
        double const top = middle - up, bottom = middle + down;
        for (int y = static_cast<int>(top); y < tile.height && y < bottom; ++y) {
            auto shade = color;
            shade.setAlphaF(color.alphaF() * static_cast<float>(covered(y, top, bottom)));
            reinterpret_cast<QRgb*>(picture.scanLine(y))[x] = qPremultiply(shade.rgba());
        }
    }
    return picture;
}

/// The pyramids, by asset; null for a sound that cannot be read. Shared by the queues, each of which may outlive a
/// request.
struct SoundWaves::Sounds {
    using Found = std::shared_ptr<PeakPyramid const>;

    /// None where it is not known yet; true in `isNew` for the first who asks.
    std::optional<Found> find(std::string const& asset, bool& isNew) {
        std::lock_guard const lock(mutex);
        isNew = known.try_emplace(asset).second;
        return known[asset];
    }
    void measure(std::string const& asset) {
        Found found;
        try {
            auto peaks = folder.peaks(place(asset), [this] { return !isEnding; });
            if (!peaks) return;
            found = std::make_shared<PeakPyramid const>(std::move(*peaks));
        } catch (Error const&) {
            // It is shown without a waveform.
        }
        {
            std::lock_guard const lock(mutex);
            known[asset] = found;
        }
        onReady();
    }

    PeakFolder folder;
    Place place;
    std::function<void()> onReady;
    std::atomic<bool> isEnding = false;
    std::mutex mutex;
    std::map<std::string, std::optional<Found>> known;
};

SoundWaves::SoundWaves(PeakFolder folder, Place place, std::function<void()> onReady)
    : sounds_(new Sounds{std::move(folder), std::move(place), onReady})
    , measuring_(std::make_unique<SerialQueue>("com.tavaro.timeline.sound")) {
    measuring_->async([sounds = sounds_] { sounds->folder.prune(mostFolderBytes); });
    auto const draw = [sounds = sounds_, measuring = measuring_.get()](WaveTile const& tile) -> std::optional<QImage> {
        bool isNew = false;
        auto const found = sounds->find(tile.asset, isNew);
        if (isNew) measuring->async([sounds, asset = tile.asset] { sounds->measure(asset); });
        if (!found) return std::nullopt;
        return *found ? drawWave(**found, tile) : QImage();
    };
    tiles_ =
        std::make_unique<TileStore<WaveTile>>("com.tavaro.timeline.waves", mostTileBytes, draw, std::move(onReady));
}

SoundWaves::~SoundWaves() {
    sounds_->isEnding = true;
    tiles_.reset(); // before the queue that it hands sounds to
}

}
