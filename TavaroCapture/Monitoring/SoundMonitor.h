#pragma once

#include <TavaroCapture/Sources/CaptureSource.h>
#include <TavaroCapture/Sources/SoundState.h>

#include <memory>
#include <string>
#include <variant>

namespace tavaro {

class SoundSource;

/// Listens to a sound that is not recorded, so that people see how loud it is. Its device is open for as long as the
/// object lives.
class SoundMonitor {
public:
    using Source = std::variant<MicrophoneSource, SystemSoundSource>;

    /// Returns when sound comes, or after two seconds without any. `server` is as in `$PULSE_SERVER`; empty means that,
    /// or the session's own. Throws `CaptureError`.
    explicit SoundMonitor(Source const& source, std::string const& server = {});
    SoundMonitor(std::unique_ptr<SoundSource> source, StreamRole role);
    ~SoundMonitor();
    SoundMonitor(SoundMonitor const&) = delete;
    SoundMonitor& operator=(SoundMonitor const&) = delete;

    /// Any thread.
    SoundState state() const;

private:
    struct Ear;
    std::unique_ptr<Ear> ear_;
};

}
