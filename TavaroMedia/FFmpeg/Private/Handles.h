#pragma once

#include <TavaroCore/Files/ReleaseWith.h>

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/buffer.h>
#include <libavutil/dict.h>
#include <libavutil/frame.h>
#include <libswresample/swresample.h>
}

namespace tavaro::ffmpeg {

/// FFmpeg frees through the address of the handle.
template<auto release> struct ReleaseByAddress {
    void operator()(auto* handle) const { release(&handle); }
};

using Input = std::unique_ptr<AVFormatContext, ReleaseByAddress<avformat_close_input>>;
using Output = std::unique_ptr<AVFormatContext, ReleaseWith<avformat_free_context>>;
using CodecContext = std::unique_ptr<AVCodecContext, ReleaseByAddress<avcodec_free_context>>;
using Frame = std::unique_ptr<AVFrame, ReleaseByAddress<av_frame_free>>;
using Packet = std::unique_ptr<AVPacket, ReleaseByAddress<av_packet_free>>;
using BufferPool = std::unique_ptr<AVBufferPool, ReleaseByAddress<av_buffer_pool_uninit>>;
using Resampler = std::unique_ptr<SwrContext, ReleaseByAddress<swr_free>>;
using Dictionary = std::unique_ptr<AVDictionary, ReleaseByAddress<av_dict_free>>;

}
