#include <Tavaro/Studio/Recorder/LiveCamera.h>

#include <Tavaro/Studio/Recorder/Sentence.h>

#include <mutex>
#include <utility>

namespace tavaro {

namespace {

constexpr QSize mostPixels{480, 360};
constexpr int betweenPictures = 50; // milliseconds: a mirror needs no more

/// Small, and the other way round, as people know themselves.
QImage mirrored(ImageView const& pixels, PixelOrder order) {
    auto const format = order == PixelOrder::rgba ? QImage::Format_RGBX8888 : QImage::Format_RGB32;
    QImage const whole(pixels.pixels, pixels.width, pixels.height, pixels.stride, format);
    return whole.scaled(mostPixels, Qt::KeepAspectRatio, Qt::FastTransformation)
        .mirrored(true, false)
        .convertToFormat(QImage::Format_RGB32);
}

}

/// The newest picture; the last one wins.
struct LiveCamera::Slot {
    std::mutex mutex;
    bool isWanted = true; // the one before has been taken
    QImage picture;

    void put(ImageView const& pixels, PixelOrder order) {
        {
            std::lock_guard const lock(mutex);
            if (!std::exchange(isWanted, false)) return;
        }
        auto made = mirrored(pixels, order);
        std::lock_guard const lock(mutex);
        picture = std::move(made);
    }
    QImage take() {
        std::lock_guard const lock(mutex);
        if (!picture.isNull()) isWanted = true;
        return std::exchange(picture, {});
    }
};

std::unique_ptr<CameraMonitor> LiveCamera::openedCamera(CameraDeviceSource const& source,
                                                        CameraMonitor::Picture picture) {
    return std::make_unique<CameraMonitor>(source, std::move(picture));
}

LiveCamera::LiveCamera(MainQueue& queue, Open open)
    : open_(std::move(open))
    , slot_(std::make_shared<Slot>())
    , device_(queue, "com.tavaro.studio.camera") {
    timer_.setInterval(betweenPictures);
    connect(&timer_, &QTimer::timeout, this, &LiveCamera::show);
}

LiveCamera::~LiveCamera() = default;

void LiveCamera::look(std::optional<CameraDeviceSource> const& source) {
    if (source == source_) return;
    source_ = source;
    forget();
    if (!source) return device_.close();
    device_.open(
        [open = open_, slot = slot_, wanted = *source] {
            return open(wanted, [slot](ImageView pixels, PixelOrder order) { slot->put(pixels, order); });
        },
        [this](std::exception_ptr const& failure) {
            if (failure) return set({}, sentenceOf(failure));
            timer_.start();
        });
}

void LiveCamera::letGo(std::function<void()> closed) {
    source_.reset();
    forget();
    device_.close(std::move(closed));
}

void LiveCamera::forget() {
    timer_.stop();
    slot_ = std::make_shared<Slot>();
    set({}, {});
}

void LiveCamera::show() {
    auto const* const monitor = device_.get();
    if (!monitor) return;
    auto picture = slot_->take();
    auto const warning = monitor->isAway() ? tr("No pictures come from the camera. Is it unplugged?") : QString();
    if (picture.isNull() && warning == warning_) return;
    set(picture.isNull() ? picture_ : std::move(picture), warning);
}

void LiveCamera::set(QImage picture, QString const& warning) {
    if (picture.isNull() && picture_.isNull() && warning == warning_) return;
    picture_ = std::move(picture);
    warning_ = warning;
    Q_EMIT changed();
}

}
