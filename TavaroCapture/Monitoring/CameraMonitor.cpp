#include <TavaroCapture/Monitoring/CameraMonitor.h>

#include <TavaroCapture/Devices/Private/OpenSources.h>

#include <atomic>
#include <utility>

namespace tavaro {

struct CameraMonitor::Eye {
    std::unique_ptr<CameraSource> const source;
    Picture const picture;
    DevicePixels pixels; // the source's thread's
    std::atomic<bool> isAway = false;

    Eye(std::unique_ptr<CameraSource> source, Picture shown) : source(std::move(source)), picture(std::move(shown)) {
        this->source->start({.picture = [this](CapturedPicture const& captured) { show(captured.picture); },
                             .lost = [this](double) { isAway = true; },
                             .returned = [this](double) { isAway = false; }});
    }
    ~Eye() { source->stop(); }
    Eye(Eye const&) = delete;
    Eye& operator=(Eye const&) = delete;

    void show(DevicePicture const& captured) {
        auto const shown = pixels.of(captured);
        picture(shown.view, shown.order);
    }
};

CameraMonitor::CameraMonitor(CameraDeviceSource const& source, Picture picture)
    : CameraMonitor(openCamera(source), std::move(picture)) {}

CameraMonitor::CameraMonitor(std::unique_ptr<CameraSource> source, Picture picture)
    : eye_(std::make_unique<Eye>(std::move(source), std::move(picture))) {}

CameraMonitor::~CameraMonitor() = default;

bool CameraMonitor::isAway() const { return eye_->isAway; }

}
