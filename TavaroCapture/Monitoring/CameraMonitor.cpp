#include <TavaroCapture/Monitoring/CameraMonitor.h>

#include <TavaroCapture/Devices/Private/OpenSources.h>

#include <atomic>
#include <utility>

namespace tavaro {

struct CameraMonitor::Eye {
    std::unique_ptr<CameraSource> const source;
    Picture const picture;
    std::atomic<bool> isAway = false;

    Eye(std::unique_ptr<CameraSource> source, Picture shown) : source(std::move(source)), picture(std::move(shown)) {
        this->source->start(
            {.picture = [this](CapturedPicture const& captured) { picture(captured.pixels, captured.order); },
             .lost = [this] { isAway = true; },
             .returned = [this] { isAway = false; }});
    }
    ~Eye() { source->stop(); }
    Eye(Eye const&) = delete;
    Eye& operator=(Eye const&) = delete;
};

CameraMonitor::CameraMonitor(CameraDeviceSource const& source, Picture picture)
    : CameraMonitor(openCamera(source), std::move(picture)) {}

CameraMonitor::CameraMonitor(std::unique_ptr<CameraSource> source, Picture picture)
    : eye_(std::make_unique<Eye>(std::move(source), std::move(picture))) {}

CameraMonitor::~CameraMonitor() = default;

bool CameraMonitor::isAway() const { return eye_->isAway; }

}
