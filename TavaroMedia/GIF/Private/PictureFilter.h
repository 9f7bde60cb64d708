#pragma once

#include <memory>
#include <string>
#include <vector>

#include <TavaroMedia/FFmpeg/Private/Handles.h>

struct AVFilterContext;
struct AVFilterGraph;

namespace tavaro {

/// One of FFmpeg's picture filters between its inputs and its output, on the calling thread. Failures are thrown as
/// those of writing `file`.
class PictureFilter {
public:
    static constexpr AVRational ticks{1, 100}; // of the pictures' times
    static constexpr AVPixelFormat format = AV_PIX_FMT_RGB32;

    PictureFilter(std::string file, char const* filter, std::string const& options);
    ~PictureFilter();

    /// Inputs are added in the filter's order; then `begin`.
    void addInput(int width, int height);
    void begin();

    /// The filter does not change the pictures that it is given.
    void put(std::size_t input, AVFrame& frame);
    void end(std::size_t input);
    /// The next picture that came out; null when the filter waits for more.
    ffmpeg::Frame take();

private:
    void check(int code) const;

    struct FreeGraph {
        void operator()(AVFilterGraph* graph) const;
    };
    std::string file_;
    std::unique_ptr<AVFilterGraph, FreeGraph> graph_;
    AVFilterContext* filter_ = nullptr;
    AVFilterContext* sink_ = nullptr;
    std::vector<AVFilterContext*> inputs_;
};

}
