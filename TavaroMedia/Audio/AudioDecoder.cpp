#include <TavaroMedia/Audio/Private/AudioDecoder.h>

#include <algorithm>
#include <array>
#include <new>
#include <span>
#include <string_view>

#include <TavaroMedia/FFmpeg/Private/Failures.h>
#include <TavaroMedia/FFmpeg/Private/OpenInput.h>

namespace tavaro {

namespace {

using Kind = MediaError::Kind;

constexpr auto noTicks = AV_NOPTS_VALUE;

// Sound slower than a telephone's is a forged header, and would blow up to any length when it is resampled.
constexpr int slowestRate = 4'000;
constexpr int fastestRate = 768'000;

// So many packets in a row without a sample, and the rest gives none.
constexpr int fruitlessLimit = 4096;

/// Containers whose times are counted in samples, and whose index leads to each.
bool countsSamples(AVFormatContext const& format) {
    std::string_view const name = format.iformat->name;
    static constexpr std::array<std::string_view, 4> counting{"wav", "flac", "aiff", "caf"};
    return name.find("mp4") != std::string_view::npos || std::ranges::find(counting, name) != counting.end();
}

}

void throwReadingAudio(Kind kind, std::string const& detail) {
    throw MediaError(kind, "Could not read the audio track: " + detail, detail);
}

AudioDecoder::AudioDecoder(std::filesystem::path const& file)
    : file_(file)
    , packet_(av_packet_alloc())
    , frame_(av_frame_alloc()) {
    if (!packet_ || !frame_) throwReadingAudio(Kind::unreadable, "could not allocate a buffer");
    open();
    if (!read()) {
        if (!hasPackets_) throw MediaError(Kind::emptyAudioTrack, "The audio track is empty.", "it is empty");
        throwReadingAudio(Kind::unreadable, "nothing of it can be decoded");
    }
    isHeld_ = true;
}

void AudioDecoder::open() {
    stream_ = nullptr;
    decoder_.reset();
    try {
        input_ = ffmpeg::openInput(file_);
    } catch (MediaError const& error) {
        throwReadingAudio(error.kind(), error.detail());
    }
    for (auto* stream : std::span(input_->streams, input_->nb_streams)) {
        auto const isWanted = !stream_ && stream->codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
        if (isWanted) stream_ = stream;
        stream->discard = isWanted ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    }
    if (!stream_) throwReadingAudio(Kind::noAudioTrack, "the file has no sound");
    if (stream_->time_base.num <= 0 || stream_->time_base.den <= 0)
        throwReadingAudio(Kind::unreadable, ffmpeg::reason(AVERROR_INVALIDDATA));
    openDecoder();
    isDraining_ = isHeld_ = false;
    next_ = 0;
    if (origin_ == noTicks) findOrigin();
}

void AudioDecoder::openDecoder() {
    auto const* codec = avcodec_find_decoder(stream_->codecpar->codec_id);
    if (!codec) throwReadingAudio(Kind::unsupported, ffmpeg::reason(AVERROR_DECODER_NOT_FOUND));
    decoder_.reset(avcodec_alloc_context3(codec));
    if (!decoder_) throwReadingAudio(Kind::unreadable, "could not allocate a buffer");
    auto code = avcodec_parameters_to_context(decoder_.get(), stream_->codecpar);
    if (code >= 0) {
        decoder_->pkt_timebase = stream_->time_base;
        decoder_->thread_count = 1;
        code = avcodec_open2(decoder_.get(), codec, nullptr);
    }
    if (code < 0) throwReadingAudio(Kind::unreadable, ffmpeg::reason(code));
}

/// A movie's time counts from its first picture. Sound without pictures counts from its own first sample, which is
/// known when that is decoded.
void AudioDecoder::findOrigin() {
    for (auto const* stream : std::span(input_->streams, input_->nb_streams)) {
        if (!ffmpeg::isPicture(*stream) || stream->start_time == noTicks || stream->time_base.den <= 0) continue;
        origin_ = av_rescale_q(stream->start_time, stream->time_base, stream_->time_base);
        return;
    }
}

bool AudioDecoder::read() {
    if (isHeld_) {
        isHeld_ = false;
        return true;
    }
    for (int fruitless = 0; fruitless < fruitlessLimit; ++fruitless) {
        auto const code = avcodec_receive_frame(decoder_.get(), frame_.get());
        if (code == AVERROR(EAGAIN) && !isDraining_) {
            feed();
            continue;
        }
        if (code == AVERROR_EOF || code == AVERROR(EAGAIN)) return false;
        if (code < 0 || frame_->nb_samples <= 0) continue;
        if (rate_ == 0) {
            rate_ = frame_->sample_rate;
            if (rate_ < slowestRate || rate_ > fastestRate)
                throwReadingAudio(Kind::unsupported, "it has " + std::to_string(rate_) + " samples a second");
            auto const unit = std::int64_t{stream_->time_base.num} * rate_;
            isExact_ = countsSamples(*input_) && stream_->time_base.den % unit == 0;
        }
        if (frame_->sample_rate != rate_) continue; // one track has one rate; anything else is damage
        // Without pictures, time 0 is the first sample. What an encoder puts before it has a negative time.
        if (origin_ == noTicks && frame_->best_effort_timestamp != noTicks)
            origin_ = std::max<std::int64_t>(frame_->best_effort_timestamp, 0);
        place_ = placeOf(*frame_);
        next_ = place_ + frame_->nb_samples;
        return true;
    }
    return false;
}

bool AudioDecoder::feed() {
    auto* packet = packet_.get();
    for (int unreadable = 0; unreadable < fruitlessLimit; ++unreadable) {
        auto const code = av_read_frame(input_.get(), packet);
        if (code == AVERROR_EOF) break;
        if (code < 0) continue;
        bool const isWanted = packet->stream_index == stream_->index && !(packet->flags & AV_PKT_FLAG_CORRUPT);
        if (isWanted) {
            hasPackets_ = true;
            avcodec_send_packet(decoder_.get(), packet); // a packet that is refused is a damaged one
        } else if (packet->stream_index != stream_->index) {
            --unreadable;
        }
        av_packet_unref(packet);
        if (isWanted) return true;
    }
    isDraining_ = true;
    avcodec_send_packet(decoder_.get(), nullptr);
    return false;
}

std::int64_t AudioDecoder::placeOf(AVFrame const& frame) const {
    auto const ticks = frame.best_effort_timestamp;
    if (ticks == noTicks || origin_ == noTicks) return next_;
    std::int64_t sinceOrigin = 0;
    if (__builtin_sub_overflow(ticks, origin_, &sinceOrigin)) return next_;
    return av_rescale_q(sinceOrigin, stream_->time_base, {1, rate_});
}

bool AudioDecoder::seek(std::int64_t place) {
    auto const ticks = av_rescale_q(place, {1, rate_}, stream_->time_base) + (origin_ == noTicks ? 0 : origin_);
    if (av_seek_frame(input_.get(), stream_->index, ticks, AVSEEK_FLAG_BACKWARD) < 0) return false;
    avcodec_flush_buffers(decoder_.get());
    isDraining_ = isHeld_ = false;
    return true;
}

void AudioDecoder::rewind() { open(); }

AudioInfo AudioDecoder::describe() const {
    AudioInfo info;
    info.channels = stream_->codecpar->ch_layout.nb_channels;
    info.sampleRate = rate_;
    info.codec = avcodec_get_name(stream_->codecpar->codec_id);
    if (stream_->duration > 0) {
        info.duration = av_q2d(stream_->time_base) * static_cast<double>(stream_->duration);
    } else if (input_->duration > 0) {
        info.duration = static_cast<double>(input_->duration) / AV_TIME_BASE;
    }
    return info;
}

}
