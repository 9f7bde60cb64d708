#pragma once

#include <cstdint>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

namespace tavaro::ffmpeg {

/// FFmpeg's filters, loaded when they are first used: their library brings thirty others with it, which would add a
/// third to the start of every program.
struct FilterLibrary {
    decltype(&avfilter_graph_alloc) graphAlloc = nullptr;
    decltype(&avfilter_graph_free) graphFree = nullptr;
    decltype(&avfilter_graph_create_filter) graphCreateFilter = nullptr;
    decltype(&avfilter_graph_parse_ptr) graphParse = nullptr;
    decltype(&avfilter_graph_config) graphConfig = nullptr;
    decltype(&avfilter_get_by_name) filterNamed = nullptr;
    decltype(&avfilter_inout_alloc) inOutAlloc = nullptr;
    decltype(&avfilter_inout_free) inOutFree = nullptr;
    decltype(&av_buffersrc_add_frame_flags) sourceAddFrame = nullptr;
    decltype(&av_buffersink_get_frame) sinkGetFrame = nullptr;
};

/// Throws `MediaError` (`unsupported`) where the library cannot be loaded.
FilterLibrary const& filters();

}
