#pragma once

#include <optional>
#include <span>
#include <string>

#include <TavaroMedia/Movie/Private/Encoder.h>

namespace tavaro {

/// FFmpeg's names of the hardware encoders that there is code for, the best first. Whether the machine has one of them
/// only a try tells.
std::span<std::string const> hardwareEncoders(MovieCodec codec);

/// Opens one of them; none when the machine, or the encoder at these settings, does not take part.
std::optional<VideoEncoder> openHardware(std::string const& name, MovieWriterSettings const& settings);

/// The hardware encoder that is proven to take a frame of these settings, opened. The first question may take a second
/// where there is hardware to wake, and takes milliseconds where there is none; after that it is answered from memory.
std::optional<VideoEncoder> openWorkingHardware(MovieWriterSettings const& settings);

}
