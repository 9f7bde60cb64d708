#include <TavaroMedia/Movie/Private/Encoder.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <string>
#include <thread>

#include <fmt/format.h>

#include <TavaroMedia/FFmpeg/Private/Failures.h>
#include <TavaroMedia/Movie/Private/HardwareEncoder.h>

namespace tavaro {

namespace {

struct SoftwareEncoder {
    char const* name;
    AVPixelFormat format;
};

SoftwareEncoder choice(MovieCodec codec) {
    switch (codec) {
    case MovieCodec::h264: return {"libx264", AV_PIX_FMT_YUV420P};
    case MovieCodec::hevc: return {"libx265", AV_PIX_FMT_YUV420P};
    case MovieCodec::proRes422: return {"prores_aw", AV_PIX_FMT_YUV422P10};
    }
    return {"", AV_PIX_FMT_NONE};
}

class Options {
public:
    Options& set(char const* name, std::string const& value) {
        auto* raw = dictionary_.release();
        av_dict_set(&raw, name, value.c_str(), 0);
        dictionary_.reset(raw);
        return *this;
    }
    AVDictionary* release() { return dictionary_.release(); }

private:
    ffmpeg::Dictionary dictionary_;
};

char const* nameOf(MovieCodec codec) {
    switch (codec) {
    case MovieCodec::h264: return "H.264";
    case MovieCodec::hevc: return "HEVC";
    case MovieCodec::proRes422: return "ProRes 422";
    }
    return "";
}

int threadCount(MovieWriterSettings const& settings) {
    return settings.threads > 0 ? settings.threads
                                : static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
}

// The encoder's own control of its rate begins far too coarsely for text, which a still page then shows until the next
// key frame, while most of the rate is left unspent. So levels may get no coarser than a film of many details and much
// motion needs at the usual rate: by six for every halving of the bits that a pixel gets.
int coarsestLevel(MovieWriterSettings const& settings) {
    constexpr double usualBits = 0.065; // a pixel
    constexpr double usualLevel = 27;
    auto const pixels = static_cast<double>(settings.width) * settings.height * settings.fps;
    auto const level = usualLevel - 6 * std::log2(static_cast<double>(settings.bitrate) / (usualBits * pixels));
    return static_cast<int>(std::clamp(std::round(level), usualLevel, 51.0));
}

// Choosing modes by their distortion is what text in motion needs most, for about as much time again. What makes
// pictures look livelier, by noise that was not there, is off, as in H.264 at its preset; so are coarser levels for
// busy blocks, which letters are. Every frame that the encoder looks ahead or reorders costs some thirty megabytes at
// 4K. So short a look ahead misleads the block tree (the movie falls short of its bit rate by a quarter), so it stays
// off.
void configureHEVC(MovieWriterSettings const& settings, LevelBound bound, Options& options) {
    auto parameters = fmt::format("log-level=none:open-gop=0:bframes=0:rd=3:aq-mode=0:cutree=0:psy-rd=0:psy-rdoq=0:"
                                  "rc-lookahead=3:pools={}",
                                  threadCount(settings));
    if (bound == LevelBound::fine) parameters += fmt::format(":qpmax={}", coarsestLevel(settings));
    options.set("preset", "superfast").set("profile", "main").set("x265-params", parameters);
}

void configureFilm(AVCodecContext& encoder, MovieWriterSettings const& settings, LevelBound bound, Options& options) {
    encoder.bit_rate = settings.bitrate;
    encoder.thread_count = threadCount(settings);
    switch (settings.codec) {
    case MovieCodec::h264:
        options.set("preset", "veryfast").set("profile", "high");
        encoder.max_b_frames = 0; // frames leave in the order they are shown
        break;
    case MovieCodec::hevc: configureHEVC(settings, bound, options); break;
    case MovieCodec::proRes422:
        encoder.bit_rate = 0;
        encoder.profile = FF_PROFILE_PRORES_STANDARD;
        options.set("vendor", "apl0");
        break;
    }
}

// One thread and no look-ahead: a frame's packet is out before `append` returns, so a killed writer has lost no frame
// to the encoder, and no cycle goes into keeping threads in step. A constant quantizer spares the measuring that x264's
// constant rate factor does first, a third of its time at this preset; 18 leaves text within half a percent of its
// levels.
void configureTake(AVCodecContext& encoder, MovieWriterSettings const& settings, Options& options) {
    encoder.thread_count = std::max(1, settings.threads);
    encoder.max_b_frames = 0;
    switch (settings.codec) {
    case MovieCodec::h264: options.set("preset", "ultrafast").set("tune", "zerolatency").set("qp", "18"); break;
    case MovieCodec::hevc:
        options.set("preset", "ultrafast").set("tune", "zerolatency").set("crf", "18").set("profile", "main");
        options.set("x265-params", "log-level=none:pools=" + std::to_string(encoder.thread_count));
        break;
    case MovieCodec::proRes422:
        encoder.profile = FF_PROFILE_PRORES_STANDARD;
        options.set("vendor", "apl0");
        break;
    }
}

}

int ticksPerSecond(int fps) { return fps * ((90000 + fps - 1) / fps); }

ffmpeg::CodecContext newEncoder(AVCodec const& codec, MovieWriterSettings const& settings) {
    ffmpeg::CodecContext encoder(avcodec_alloc_context3(&codec));
    if (!encoder) throw std::bad_alloc();
    encoder->width = settings.width;
    encoder->height = settings.height;
    encoder->pix_fmt = AV_PIX_FMT_YUV420P;
    encoder->sample_aspect_ratio = {1, 1};
    encoder->time_base = {1, ticksPerSecond(settings.fps)};
    encoder->framerate = {settings.fps, 1};
    encoder->gop_size = settings.keyFrameInterval > 0 ? settings.keyFrameInterval : 2 * settings.fps;
    encoder->color_range = AVCOL_RANGE_MPEG;
    encoder->colorspace = AVCOL_SPC_BT709;
    encoder->color_primaries = AVCOL_PRI_BT709;
    encoder->color_trc = AVCOL_TRC_BT709;
    encoder->chroma_sample_location = AVCHROMA_LOC_LEFT;
    encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    return encoder;
}

VideoEncoder openSoftwareEncoder(std::filesystem::path const& file, MovieWriterSettings const& settings,
                                 LevelBound bound) {
    auto const [name, format] = choice(settings.codec);
    auto const* codec = avcodec_find_encoder_by_name(name);
    if (!codec) ffmpeg::throwWriting(file, AVERROR_ENCODER_NOT_FOUND);
    VideoEncoder encoder{.context = newEncoder(*codec, settings), .drawn = format};
    encoder.context->pix_fmt = format;
    Options options;
    if (settings.intent == MovieIntent::live) {
        configureTake(*encoder.context, settings, options);
    } else {
        configureFilm(*encoder.context, settings, bound, options);
        encoder.hasLevelBound = settings.codec == MovieCodec::hevc && bound == LevelBound::fine;
    }
    auto* raw = options.release();
    auto const code = avcodec_open2(encoder.context.get(), codec, &raw);
    av_dict_free(&raw);
    if (code < 0) ffmpeg::throwWriting(file, code);
    return encoder;
}

VideoEncoder openEncoder(std::filesystem::path const& file, MovieWriterSettings const& settings) {
    if (settings.encoder != EncoderChoice::software) {
        if (auto hardware = openWorkingHardware(settings)) return std::move(*hardware);
        if (settings.encoder == EncoderChoice::hardware)
            ffmpeg::throwWriting(file, MediaError::Kind::unsupported,
                                 fmt::format("no video hardware here encodes {} at {} × {}", nameOf(settings.codec),
                                             settings.width, settings.height));
    }
    return openSoftwareEncoder(file, settings);
}

}
