#include <TavaroMedia/GIF/GIFWriter.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <utility>

#include <TavaroMedia/FFmpeg/Private/Failures.h>
#include <TavaroMedia/FFmpeg/Private/OutputStream.h>
#include <TavaroMedia/Frames/Private/EncoderPlanes.h>
#include <TavaroMedia/GIF/Private/GIFColors.h>

extern "C" {
#include <libavutil/opt.h>
}

namespace tavaro {

namespace {

using Kind = MediaError::Kind;

constexpr std::int64_t longestDelay = 60'000; // hundredths of a second; the field ends at 65,535
constexpr int largestSide = 65'535;

constexpr AVRational hundredths{1, 100}; // of a second

ffmpeg::CodecContext openEncoder(std::filesystem::path const& file, int width, int height) {
    if (width < 1 || height < 1 || width > largestSide || height > largestSide)
        ffmpeg::throwWriting(file, Kind::refused, "its size must be between 1 and 65535 pixels on each side");
    auto const* codec = avcodec_find_encoder(AV_CODEC_ID_GIF);
    if (!codec) ffmpeg::throwWriting(file, AVERROR_ENCODER_NOT_FOUND);
    ffmpeg::CodecContext encoder(avcodec_alloc_context3(codec));
    if (!encoder) throw std::bad_alloc();
    encoder->width = width;
    encoder->height = height;
    encoder->pix_fmt = AV_PIX_FMT_PAL8;
    encoder->time_base = hundredths;
    ffmpeg::checkWriting(file, avcodec_open2(encoder.get(), codec, nullptr));
    return encoder;
}

bool areEqual(AVFrame const& a, AVFrame const& b) {
    for (int y = 0; y < a.height; ++y) {
        if (std::memcmp(a.data[0] + y * a.linesize[0], b.data[0] + y * b.linesize[0],
                        4 * static_cast<std::size_t>(a.width)) != 0)
            return false;
    }
    return true;
}

}

struct GIFWriter::State {
    State(std::filesystem::path const& file, int width, int height, GIFPalette const& palette)
        : encoder((ffmpeg::prepareLibraries(), openEncoder(file, width, height)))
        , pool(width, height, AV_PIX_FMT_RGB32)
        , colors(width, height, palette)
        , output(file, ffmpeg::Place::beside, "gif") {
        if (!packet) throw std::bad_alloc();
        output.check(avcodec_parameters_from_context(output.addStream().codecpar, encoder.get()));
        AVDictionary* options = nullptr;
        av_dict_set_int(&options, "loop", 0, 0); // for ever
        output.begin(ffmpeg::Dictionary(options));
    }

    ffmpeg::CodecContext encoder;
    EncoderPicturePool pool;
    GIFColors colors;
    ffmpeg::OutputStream output;
    ffmpeg::Packet packet{av_packet_alloc()};
    EncoderPicture latest{nullptr}; // the picture on show, as it was given
    std::int64_t latestTicks = -1;  // of the newest picture, written or not
    std::int64_t writtenTicks = 0;  // of the one that was written last
    bool hasEnded = false;

    void write(AVFrame const& picture) {
        auto const frame = colors.draw(picture);
        frame->pts = picture.pts;
        output.check(avcodec_send_frame(encoder.get(), frame.get()));
        int code = 0;
        while ((code = avcodec_receive_packet(encoder.get(), packet.get())) >= 0) output.write(*packet, hundredths);
        if (code != AVERROR(EAGAIN)) output.check(code);
    }

    void writeRest(double endTime) {
        if (latestTicks < 0) ffmpeg::throwWriting(output.file(), Kind::refused, "there is no frame to write");
        auto const end = static_cast<std::int64_t>(std::llround(std::clamp(endTime, 0.0, 1e7) * 100));
        auto const delay = std::clamp<std::int64_t>(end - writtenTicks, 2, longestDelay);
        av_opt_set_int(output.format().priv_data, "final_delay", delay, 0);
        hasEnded = true;
    }
};

GIFWriter::GIFWriter(std::filesystem::path const& file, int width, int height, GIFPalette const& palette)
    : state_(std::make_unique<State>(file, width, height, palette)) {}

GIFWriter::~GIFWriter() {
    // The muxer frees the picture that it holds back only when it ends its file, which nobody will see.
    if (!state_->hasEnded) av_write_trailer(&state_->output.format());
}

EncoderPicture GIFWriter::picture() { return state_->pool.take(); }

void GIFWriter::append(EncoderPicture picture, double presentationTime) {
    auto& state = *state_;
    auto const ticks = static_cast<std::int64_t>(std::llround(std::clamp(presentationTime, -1.0, 1e9) * 100));
    if (!(presentationTime >= 0 && presentationTime < 1e7) || ticks <= state.latestTicks)
        ffmpeg::throwWriting(state.output.file(), Kind::refused, "a frame's time is not after the one before it");
    auto& frame = *picture.planes().frame;
    bool const isFirst = std::exchange(state.latestTicks, ticks) < 0;
    bool const isInTime = ticks - state.writtenTicks < longestDelay;
    if (!isFirst && isInTime && areEqual(frame, *state.latest.planes().frame)) return;
    state.writtenTicks = frame.pts = ticks;
    state.write(frame);
    state.latest = std::move(picture);
}

void GIFWriter::finish(double endTime) {
    state_->writeRest(endTime);
    state_->output.commit();
}

std::filesystem::path GIFWriter::finishUnderUnusedName(std::filesystem::path const& wanted, double endTime) {
    state_->writeRest(endTime);
    return state_->output.commitUnderUnusedName(wanted);
}

}
