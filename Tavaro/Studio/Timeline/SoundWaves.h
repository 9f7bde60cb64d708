#pragma once

#include <Tavaro/Studio/Timeline/PeakFile.h>
#include <Tavaro/Studio/Timeline/TileStore.h>

#include <QColor>
#include <QImage>

#include <atomic>
#include <compare>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace tavaro {

/// A piece of a waveform: 256 pixels of a sound, one of a row of such that begins with the sound.
struct WaveTile {
    static constexpr int width = 256;

    std::string asset;
    int scale = 0; // `secondsPerPixel` is 2^(scale / 2)
    std::int64_t number = 0;
    int height = 0; // pixels
    QRgb color = 0;

    /// The scale whose pixels are the largest that are no larger than that many seconds.
    static int scaleFor(double secondsPerPixel);
    double secondsPerPixel() const;
    double seconds() const { return width * secondsPerPixel(); }
    double start() const { return static_cast<double>(number) * seconds(); }

    auto operator<=>(WaveTile const&) const = default;
};

/// Draws it: quiet sound is drawn louder than it is, so that speech can be told from silence.
QImage drawWave(PeakPyramid const& sound, WaveTile const& tile);

/// The waveforms of a project's sounds. Sounds are measured once, beside the main thread, and their tiles drawn there.
class SoundWaves {
public:
    using Place = std::function<std::filesystem::path(std::string const& asset)>;

    /// `onReady` is called on another thread when there is something new to paint.
    SoundWaves(PeakFolder folder, Place place, std::function<void()> onReady);
    ~SoundWaves();

    /// Empty until it is there, and for sounds that cannot be read.
    QImage picture(WaveTile const& tile) { return tiles_->picture(tile); }
    void paintEnds() { tiles_->paintEnds(); }

private:
    struct Sounds;

    std::shared_ptr<Sounds> sounds_;
    std::unique_ptr<SerialQueue> measuring_;
    std::unique_ptr<TileStore<WaveTile>> tiles_;
};

}
