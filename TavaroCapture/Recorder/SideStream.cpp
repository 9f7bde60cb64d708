#include <TavaroCapture/Recorder/Private/SideStream.h>

#include <TavaroCapture/Recorder/Private/CameraStream.h>
#include <TavaroCapture/Recorder/Private/SoundStream.h>

#include <utility>

namespace tavaro {

std::unique_ptr<SideStream> recordCamera(std::unique_ptr<CameraSource> source, TakeClock const& clock,
                                         SideStreamOptions const& options) {
    return std::make_unique<CameraStream>(std::move(source), clock, options);
}

std::unique_ptr<SideStream> recordSound(std::unique_ptr<SoundSource> source, TakeClock const& clock,
                                        SideStreamOptions const& options) {
    return std::make_unique<SoundStream>(std::move(source), clock, options);
}

}
