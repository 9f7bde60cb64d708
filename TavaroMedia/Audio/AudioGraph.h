#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include <TavaroMedia/Audio/StereoSample.h>

namespace tavaro {

/// A chain of FFmpeg's sound filters over 48 kHz stereo: "highpass=f=80,acompressor=ratio=2". Samples go in as they
/// come; what comes out does not depend on how they were divided. Throws `MediaError` (`unsupported`) where a filter is
/// not there or refuses its options.
class AudioGraph {
public:
    /// With one channel the filters work on the left side alone, in half the time, and both sides come out the same.
    explicit AudioGraph(std::string const& chain, int channels = 2);
    AudioGraph(AudioGraph&&) noexcept;
    AudioGraph& operator=(AudioGraph&&) noexcept;
    ~AudioGraph();

    void push(std::span<StereoSample const> samples);
    /// Nothing more comes.
    void finish();

    /// Appends what has come out.
    void pull(std::vector<StereoSample>& samples);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
