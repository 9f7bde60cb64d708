#include <TavaroMedia/Movie/Private/HardwareEncoder.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include <TavaroMedia/FFmpeg/Private/Failures.h>
#include <TavaroMedia/Frames/Private/EncoderPlanes.h>
#include <TavaroMedia/Movie/Private/EncoderTrials.h>

extern "C" {
#include <libavutil/hwcontext.h>
}

namespace tavaro {

namespace {

using Buffer = std::unique_ptr<AVBufferRef, ffmpeg::ReleaseByAddress<av_buffer_unref>>;

constexpr int picturesOnDevice = 20; // that the encoder holds at most

bool isNamed(std::string const& name, char const* family) { return name.ends_with(family); }

/// The machine's graphics devices. Asking for them by path keeps the library from connecting to a display.
std::vector<std::string> renderNodes() {
    std::vector<std::string> nodes;
    std::error_code ignored;
    for (auto const& entry : std::filesystem::directory_iterator("/dev/dri", ignored)) {
        if (entry.path().filename().string().starts_with("renderD")) nodes.push_back(entry.path());
    }
    std::ranges::sort(nodes);
    return nodes;
}

/// Memory for pictures on that device.
Buffer framesOn(std::string const& node, MovieWriterSettings const& settings) {
    AVBufferRef* raw = nullptr;
    if (av_hwdevice_ctx_create(&raw, AV_HWDEVICE_TYPE_VAAPI, node.c_str(), nullptr, 0) < 0) return nullptr;
    Buffer const device(raw);
    Buffer frames(av_hwframe_ctx_alloc(device.get()));
    if (!frames) return nullptr;
    auto& context = *reinterpret_cast<AVHWFramesContext*>(frames->data);
    context.format = AV_PIX_FMT_VAAPI;
    context.sw_format = AV_PIX_FMT_NV12;
    context.width = settings.width;
    context.height = settings.height;
    context.initial_pool_size = picturesOnDevice;
    return av_hwframe_ctx_init(frames.get()) < 0 ? nullptr : std::move(frames);
}

ffmpeg::Dictionary optionsOf(std::string const& name) {
    AVDictionary* options = nullptr;
    if (isNamed(name, "_nvenc")) {
        av_dict_set(&options, "preset", "p5", 0);
        av_dict_set(&options, "rc", "vbr", 0);
    } else if (isNamed(name, "_vaapi")) {
        av_dict_set(&options, "rc_mode", "VBR", 0);
    }
    return ffmpeg::Dictionary(options);
}

std::optional<VideoEncoder> open(std::string const& name, MovieWriterSettings const& settings, Buffer frames) {
    auto const* codec = avcodec_find_encoder_by_name(name.c_str());
    if (!codec) return std::nullopt;
    VideoEncoder encoder{.context = newEncoder(*codec, settings)};
    auto& context = *encoder.context;
    context.bit_rate = settings.bitrate;
    context.rc_max_rate = settings.bitrate + settings.bitrate / 2;
    context.rc_buffer_size = static_cast<int>(std::min<std::int64_t>(2 * settings.bitrate, 1 << 30));
    context.max_b_frames = 0;
    context.profile = settings.codec == MovieCodec::hevc ? FF_PROFILE_HEVC_MAIN : FF_PROFILE_H264_HIGH;
    if (frames) {
        context.pix_fmt = AV_PIX_FMT_VAAPI;
        context.hw_frames_ctx = frames.release();
        encoder.input = EncoderInput(EncoderInput::Form::onDevice);
    } else if (isNamed(name, "_qsv")) {
        context.pix_fmt = AV_PIX_FMT_NV12;
        encoder.input = EncoderInput(EncoderInput::Form::interleavedChroma);
    }
    auto* options = optionsOf(name).release();
    auto const code = avcodec_open2(&context, codec, &options);
    av_dict_free(&options);
    return code < 0 ? std::nullopt : std::optional(std::move(encoder));
}

/// Whether a grey frame comes out as a packet, and there is the header that a movie keeps in its index.
bool encodesAFrame(VideoEncoder& encoder) {
    auto& context = *encoder.context;
    EncoderPicturePool pool(context.width, context.height, encoder.drawn);
    auto picture = pool.take();
    auto& drawn = *picture.planes().frame;
    for (int plane = 0; plane < 3; ++plane) {
        auto const rows = static_cast<std::size_t>(plane == 0 ? drawn.height : drawn.height / 2);
        std::memset(drawn.data[plane], 128, rows * static_cast<std::size_t>(drawn.linesize[plane]));
    }
    drawn.pts = 0;
    auto const* frame = encoder.input.converted(&drawn, context);
    if (context.extradata_size == 0 || !frame || avcodec_send_frame(&context, frame) < 0 ||
        avcodec_send_frame(&context, nullptr) < 0)
        return false;
    ffmpeg::Packet const packet(av_packet_alloc());
    return packet && avcodec_receive_packet(&context, packet.get()) >= 0 && packet->size > 0;
}

}

std::span<std::string const> hardwareEncoders(MovieCodec codec) {
    static std::array<std::string, 3> const h264{"h264_nvenc", "h264_vaapi", "h264_qsv"};
    static std::array<std::string, 3> const hevc{"hevc_nvenc", "hevc_vaapi", "hevc_qsv"};
    switch (codec) {
    case MovieCodec::h264: return h264;
    case MovieCodec::hevc: return hevc;
    case MovieCodec::proRes422: return {};
    }
    return {};
}

std::optional<VideoEncoder> openHardware(std::string const& name, MovieWriterSettings const& settings) {
    ffmpeg::prepareLibraries();
    if (!isNamed(name, "_vaapi")) return open(name, settings, nullptr);
    for (auto const& node : renderNodes()) {
        auto frames = framesOn(node, settings);
        if (!frames) continue;
        if (auto encoder = open(name, settings, std::move(frames))) return encoder;
    }
    return std::nullopt;
}

std::optional<VideoEncoder> openWorkingHardware(MovieWriterSettings const& settings) {
    // Never destroyed: a driver that hangs in a trial may outlive `main`.
    static auto& trials = *new EncoderTrials;
    auto const purpose = fmt::format("{}x{} at {}", settings.width, settings.height, settings.fps);
    auto const name = trials.firstThatWorks(hardwareEncoders(settings.codec), purpose, [settings](auto const& name) {
        auto encoder = openHardware(name, settings);
        return encoder && encodesAFrame(*encoder);
    });
    return name ? openHardware(*name, settings) : std::nullopt;
}

}
