#include "FakeSources.h"

#include "../Media/Movie/MovieFrames.h"

#include <TavaroMedia/Audio/AudioReader.h>
#include <TavaroMedia/Frames/Image.h>
#include <TavaroPlatform/Clocks/MediaClock.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <cmath>
#include <cstring>
#include <vector>

namespace tavaro {

namespace {

constexpr int width = 64;
constexpr int height = 48;

class Picture {
public:
    Picture() : image_(width, height) {}
    /// Whether that changed it.
    bool show(bool isWhite) {
        bool const changes = isWhite != isWhite_;
        isWhite_ = isWhite;
        for (int y = 0; y < height; ++y) std::memset(image_.row(y), isWhite ? 255 : 0, std::size_t{4} * width);
        return changes;
    }
    ImageView view() const { return image_.view(); }

private:
    Image image_;
    bool isWhite_ = false;
};

class Screen final : public ScreenSource {
public:
    explicit Screen(FakeScene const& scene) : scene_(scene) {}
    Size2 size() const override { return {width, height}; }
    PixelRect frame() const override { return {0, 0, width, height}; }
    double scaleFactor() const override { return 1; }
    Outcome grab(double now) override {
        return picture_.show(scene_.isWhite(now)) ? Outcome::changed : Outcome::unchanged;
    }
    ImageView picture() const override { return picture_.view(); }

private:
    FakeScene const scene_;
    Picture picture_;
};

class Events final : public EventSource {
public:
    void start(EventHandlers) override {}
    void stop() override {}
    bool hasKeyboard() const override { return false; }
    std::optional<PixelPoint> pointer() override { return PixelPoint{width / 2, height / 2}; }
};

class Camera final : public CameraSource {
public:
    Camera(FakeScene const& scene, FakeLife const& life) : scene_(scene), life_(life) {}
    Size2 size() const override { return {width, height}; }
    int fps() const override { return 30; }
    void start(CameraHandlers handlers) override {
        handlers_ = std::move(handlers);
        queue_.startTimer(mediaClockNow(), 1.0 / fps(), [this](double scheduled) { expose(scheduled); });
    }
    void stop() override { queue_.stopTimer(); }

private:
    void expose(double at) {
        if (at < life_.from || isLost_) return;
        isLost_ = at >= life_.to;
        if (isLost_) return handlers_.lost(life_.to);
        picture_.show(scene_.isWhite(at));
        handlers_.picture({PackedPixels{picture_.view()}, at});
    }

    FakeScene const scene_;
    FakeLife const life_;
    CameraHandlers handlers_;
    Picture picture_;
    bool isLost_ = false;
    SerialQueue queue_{"test.camera"};
};

class Microphone final : public SoundSource {
public:
    Microphone(FakeScene const& scene, FakeLife const& life) : scene_(scene), life_(life) {}
    void start(SoundHandlers handlers) override {
        handlers_ = std::move(handlers);
        heardUntil_ = std::max(mediaClockNow(), life_.from);
        queue_.startTimer(heardUntil_, 0.02, [this](double scheduled) { hear(scheduled); });
    }
    void stop() override { queue_.stopTimer(); }

private:
    void hear(double until) {
        if (isLost_ && until < life_.back) return;
        if (isLost_) {
            handlers_.returned(life_.back);
            heardUntil_ = life_.back;
            life_.to = std::numeric_limits<double>::infinity();
        }
        std::vector<StereoSample> samples;
        for (double at = heardUntil_; at < std::min(until, life_.to);
             at = heardUntil_ + static_cast<double>(samples.size()) / audioRate) {
            auto const value =
                at >= scene_.flashAt ? 0.5f * static_cast<float>(std::cos(6283 * (at - scene_.flashAt))) : 0;
            samples.push_back({value, value});
        }
        if (!samples.empty()) handlers_.block({samples, heardUntil_});
        heardUntil_ += static_cast<double>(samples.size()) / audioRate;
        isLost_ = until >= life_.to;
        if (isLost_) handlers_.lost(life_.to);
    }

    FakeScene const scene_;
    FakeLife life_; // the queue's
    SoundHandlers handlers_;
    double heardUntil_ = 0;
    bool isLost_ = false;
    SerialQueue queue_{"test.microphone"};
};

}

bool FakeScene::isWhite(double moment) const {
    return moment >= flashAt && std::fmod((moment - flashAt) / blinkSeconds, 2) < 1;
}

std::unique_ptr<ScreenSource> fakeScreen(FakeScene const& scene) { return std::make_unique<Screen>(scene); }
std::unique_ptr<EventSource> fakeEvents() { return std::make_unique<Events>(); }
std::unique_ptr<CameraSource> fakeCamera(FakeScene const& scene, FakeLife const& life) {
    return std::make_unique<Camera>(scene, life);
}
std::unique_ptr<SoundSource> fakeMicrophone(FakeScene const& scene, FakeLife const& life) {
    return std::make_unique<Microphone>(scene, life);
}

std::vector<double> blinksInMovie(std::filesystem::path const& movie) {
    std::vector<double> result;
    eachFrame(movie, [&](double at, ImageView picture) {
        bool const isWhite = picture.row(height / 2)[4 * width / 2] > 128;
        if (isWhite != (result.size() % 2 == 1)) result.push_back(at);
    });
    return result;
}

double flashInMovie(std::filesystem::path const& movie) {
    auto const all = blinksInMovie(movie);
    return all.empty() ? -1 : all.front();
}

double flashInSound(std::filesystem::path const& sound) {
    AudioReader reader(sound);
    std::vector<StereoSample> samples(audioRate);
    for (std::int64_t position = 0;; position += audioRate) {
        auto const count = reader.read(position, samples);
        for (std::size_t i = 0; i < count; ++i) {
            if (std::abs(samples[i].left) > 0.25f)
                return static_cast<double>(position + static_cast<std::int64_t>(i)) / audioRate;
        }
        if (count < samples.size()) return -1;
    }
}

}
