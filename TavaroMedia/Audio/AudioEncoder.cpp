#include <TavaroMedia/Audio/Private/AudioEncoder.h>

#include <algorithm>
#include <cmath>
#include <new>

#include <TavaroMedia/FFmpeg/Private/Failures.h>

extern "C" {
#include <libavutil/channel_layout.h>
}

namespace tavaro {

namespace {

constexpr std::int64_t aacBitrate = 192'000;
constexpr std::size_t uncompressedFrame = 4096; // samples of a packet where the coding does not say

struct Coding {
    AVCodecID codec;
    AVSampleFormat format;
};

Coding codingOf(AudioCoding coding) {
    switch (coding) {
    case AudioCoding::aac: return {AV_CODEC_ID_AAC, AV_SAMPLE_FMT_FLTP};
    case AudioCoding::pcm16: return {AV_CODEC_ID_PCM_S16LE, AV_SAMPLE_FMT_S16};
    case AudioCoding::pcm24: return {AV_CODEC_ID_PCM_S24LE, AV_SAMPLE_FMT_S32};
    case AudioCoding::pcmFloat: return {AV_CODEC_ID_PCM_F32LE, AV_SAMPLE_FMT_FLT};
    }
    return {AV_CODEC_ID_NONE, AV_SAMPLE_FMT_NONE};
}

/// Full scale is 2^(bits − 1); the lowest bits of a wider number stay 0.
template<int bits, class Whole> Whole quantized(float value) {
    constexpr double scale = 1LL << (bits - 1);
    constexpr int shift = 8 * static_cast<int>(sizeof(Whole)) - bits;
    auto const whole = std::llrint(std::clamp(value * scale, -scale, scale - 1));
    return static_cast<Whole>(whole * (1LL << shift));
}

/// Calls `store(channel, i, value)` for every sample of every channel.
template<class Store> void forEachValue(std::span<StereoSample const> samples, int channels, Store store) {
    for (std::size_t i = 0; i < samples.size(); ++i) {
        auto const [left, right] = samples[i];
        if (channels == 1) {
            store(0, i, 0.5f * (left + right));
        } else {
            store(0, i, left);
            store(1, i, right);
        }
    }
}

template<class Value, class Convert>
void fillInterleaved(AVFrame& frame, std::span<StereoSample const> samples, Convert convert) {
    auto* out = reinterpret_cast<Value*>(frame.data[0]);
    forEachValue(samples, frame.ch_layout.nb_channels, [&](int, std::size_t, float value) { *out++ = convert(value); });
}

}

AudioEncoder::AudioEncoder(std::filesystem::path const& file, AudioCoding coding, int channels) : file_(file) {
    ffmpeg::prepareLibraries();
    auto const [codecID, format] = codingOf(coding);
    auto const* codec = avcodec_find_encoder(codecID);
    if (!codec) ffmpeg::throwWriting(file, AVERROR_ENCODER_NOT_FOUND);
    encoder_.reset(avcodec_alloc_context3(codec));
    if (!encoder_) throw std::bad_alloc();
    encoder_->sample_fmt = format;
    encoder_->sample_rate = audioRate;
    encoder_->time_base = audioTimeBase;
    encoder_->thread_count = 1;
    av_channel_layout_default(&encoder_->ch_layout, channels);
    encoder_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (coding == AudioCoding::aac) encoder_->bit_rate = aacBitrate;
    check(avcodec_open2(encoder_.get(), codec, nullptr));
}

void AudioEncoder::check(int code) const {
    if (code < 0) ffmpeg::throwWriting(file_, code);
}

void AudioEncoder::describe(AVStream& stream) const {
    check(avcodec_parameters_from_context(stream.codecpar, encoder_.get()));
    stream.time_base = audioTimeBase;
}

void AudioEncoder::send(std::span<StereoSample const> samples) {
    sent_ += std::ssize(samples);
    auto const size = encoder_->frame_size > 0 ? static_cast<std::size_t>(encoder_->frame_size) : uncompressedFrame;
    waiting_.insert(waiting_.end(), samples.begin(), samples.end());
    std::size_t done = 0;
    for (; waiting_.size() - done >= size; done += size) encode(std::span(waiting_).subspan(done, size));
    waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(done));
}

void AudioEncoder::finish() {
    if (!waiting_.empty()) encode(waiting_);
    waiting_.clear();
    encode({});
}

void AudioEncoder::encode(std::span<StereoSample const> samples) {
    ffmpeg::Frame frame;
    if (!samples.empty()) {
        frame.reset(av_frame_alloc());
        if (!frame) throw std::bad_alloc();
        frame->format = encoder_->sample_fmt;
        frame->nb_samples = static_cast<int>(samples.size());
        frame->sample_rate = audioRate;
        check(av_channel_layout_copy(&frame->ch_layout, &encoder_->ch_layout));
        check(av_frame_get_buffer(frame.get(), 0));
        fill(*frame, samples);
        frame->pts = encoded_;
        encoded_ += std::ssize(samples);
    }
    check(avcodec_send_frame(encoder_.get(), frame.get()));
    while (true) {
        ffmpeg::Packet packet(av_packet_alloc());
        if (!packet) throw std::bad_alloc();
        auto const code = avcodec_receive_packet(encoder_.get(), packet.get());
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return;
        check(code);
        packets_.push_back(std::move(packet));
    }
}

void AudioEncoder::fill(AVFrame& frame, std::span<StereoSample const> samples) const {
    switch (encoder_->sample_fmt) {
    case AV_SAMPLE_FMT_S16: return fillInterleaved<std::int16_t>(frame, samples, quantized<16, std::int16_t>);
    case AV_SAMPLE_FMT_S32: return fillInterleaved<std::int32_t>(frame, samples, quantized<24, std::int32_t>);
    case AV_SAMPLE_FMT_FLT: return fillInterleaved<float>(frame, samples, [](float value) { return value; });
    default:
        forEachValue(samples, frame.ch_layout.nb_channels, [&](int channel, std::size_t i, float value) {
            reinterpret_cast<float*>(frame.extended_data[channel])[i] = value;
        });
    }
}

bool AudioEncoder::receive(AVPacket& packet) {
    if (packets_.empty()) return false;
    av_packet_move_ref(&packet, packets_.front().get());
    packets_.erase(packets_.begin());
    return true;
}

}
