#pragma once

#include <Tavaro/Studio/Playback/SoundOutput.h>

#include <memory>
#include <string>

namespace tavaro {

/// The sound server of the user's session, PulseAudio's own or PipeWire's beside its protocol. It never starts one.
class PulseOutput final : public SoundOutput {
public:
    /// `server` as in `$PULSE_SERVER`; an empty one means that, or the session's own.
    explicit PulseOutput(std::string server = {});
    ~PulseOutput() override;

    void open() override;
    void close() override;
    State state() const override;
    std::string reason() const override;
    void run(std::chrono::milliseconds atMost) override;
    std::size_t room() const override;
    void write(std::span<StereoSample const> samples) override;
    std::optional<double> heard() const override;

private:
    struct Connection;

    std::string const server_;
    std::unique_ptr<Connection> connection_;
};

}
