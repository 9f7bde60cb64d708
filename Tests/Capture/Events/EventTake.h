#pragma once

#include "../TestDisplay.h"

#include <TavaroCapture/Devices/Private/OpenSources.h>
#include <TavaroCapture/Events/Private/EventRecorder.h>
#include <TavaroCapture/Events/Private/TakeClock.h>
#include <TavaroPlatform/Clocks/MediaClock.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

namespace tavaro {

/// A take of the area {100, 100, 400, 200} that logs events and no picture.
class EventTake : public DisplayTest {
protected:
    void begin() {
        clock.start(mediaClockNow());
        recorder.emplace(openEvents(display->name(), {KeyLogging::all, ownShortcuts}), PixelRect{100, 100, 400, 200},
                         clock, queue);
        recorder->start();
    }
    RecordingMetadata log() { return recorder->metadata(1000); }
    /// Waits until everything done so far has arrived, by a click that does arrive.
    void settle() {
        auto const clicks = log().clicks.size();
        client->button(1, true), client->button(1, false);
        ASSERT_TRUE(sees([&](auto const& log) { return log.clicks.size() > clicks; }));
    }
    bool sees(std::function<bool(RecordingMetadata const&)> const& isSo) {
        return eventually([&] { return isSo(log()); });
    }

    std::vector<Chord> ownShortcuts;
    TakeClock clock;
    SerialQueue queue{"test.samples"};
    std::optional<EventRecorder> recorder;
};

}
