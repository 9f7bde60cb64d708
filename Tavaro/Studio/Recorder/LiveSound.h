#pragma once

#include <Tavaro/Studio/Recorder/OpenedBeside.h>
#include <Tavaro/Studio/Recorder/SoundMeter.h>

#include <TavaroCapture/Monitoring/SoundMonitor.h>

#include <QTimer>

#include <optional>

namespace tavaro {

/// Keeps a meter at how loud a device is that is not recorded. The device is open only while it is wanted.
class LiveSound {
public:
    LiveSound(MainQueue& queue, SoundMeter& meter);

    /// None: nothing is listened to.
    void listen(std::optional<SoundMonitor::Source> const& source);

private:
    void show();

    SoundMeter& meter_;
    std::optional<SoundMonitor::Source> source_;
    QTimer timer_;
    OpenedBeside<SoundMonitor> device_;
};

}
