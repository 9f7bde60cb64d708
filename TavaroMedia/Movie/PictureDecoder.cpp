#include <TavaroMedia/Movie/Private/PictureDecoder.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <new>
#include <thread>

#include <TavaroMedia/FFmpeg/Private/Failures.h>

extern "C" {
#include <libavutil/display.h>
#include <libavutil/pixdesc.h>
}

namespace tavaro {

namespace {

using Kind = MediaError::Kind;

constexpr auto noTicks = AV_NOPTS_VALUE;

// A picture of 16384 × 8192; anything larger is a forged header.
constexpr std::int64_t largestPicture = std::int64_t{1} << 27;

// A decoder that swallows so many packets without a picture will give none.
constexpr int fruitlessLimit = 4096;

// Nearer than this, decoding on is as quick as seeking.
constexpr double nearbySeconds = 0.5;

// Where the container does not say where its key frames are, one is taken to come every so often.
constexpr double usualKeyFrameSeconds = 4;

PictureTurn turnOf(AVStream const& stream) {
    std::size_t size = 0;
    auto const* data = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (!data || size < 9 * sizeof(std::int32_t)) return {};
    auto const* matrix = reinterpret_cast<std::int32_t const*>(data);
    auto const sign = [](std::int32_t value) { return (value > 0x8000) - (value < -0x8000); };
    PictureTurn const turn{sign(matrix[0]), sign(matrix[3]), sign(matrix[1]), sign(matrix[4])};
    auto const isStraight = turn.xx && turn.yy && !turn.xy && !turn.yx;
    auto const isSideways = turn.xy && turn.yx && !turn.xx && !turn.yy;
    return isStraight || isSideways ? turn : PictureTurn{}; // a slanted picture has no size in whole pixels
}

// Pixels that are not square are made square by widening or heightening, so that no stored row or column is lost.
void setUprightSize(VideoFrame::Picture& picture, AVRational aspect) {
    auto const& frame = *picture.frame;
    picture.uprightWidth = frame.width;
    picture.uprightHeight = frame.height;
    auto const ratio = aspect.num > 0 && aspect.den > 0 ? av_q2d(aspect) : 1.0;
    if (ratio > 1 && ratio <= 4) picture.uprightWidth = static_cast<int>(std::lround(frame.width * ratio));
    if (ratio < 1 && ratio >= 0.25) picture.uprightHeight = static_cast<int>(std::lround(frame.height / ratio));
}

ffmpeg::CodecContext openDecoder(MovieSource const& source, MovieReaderOptions const& options) {
    auto const& parameters = *source.stream().codecpar;
    auto const* codec = avcodec_find_decoder(parameters.codec_id);
    if (!codec) ffmpeg::throwReading(source.file(), AVERROR_DECODER_NOT_FOUND, Kind::unsupported);
    ffmpeg::CodecContext decoder(avcodec_alloc_context3(codec));
    if (!decoder) throw std::bad_alloc();
    auto code = avcodec_parameters_to_context(decoder.get(), &parameters);
    if (code < 0) ffmpeg::throwReading(source.file(), code);
    decoder->pkt_timebase = source.stream().time_base;
    decoder->max_pixels = largestPicture;
    // Left to itself, the H.264 decoder forgets the last pictures of a movie when a seek was to the last open group;
    // what is damaged comes marked as such.
    decoder->flags |= AV_CODEC_FLAG_OUTPUT_CORRUPT;
    auto const cores = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    decoder->thread_count = options.threads > 0 ? options.threads : cores;
    code = avcodec_open2(decoder.get(), codec, nullptr);
    if (code < 0) ffmpeg::throwReading(source.file(), code);
    return decoder;
}

std::uint64_t nextReaderNumber() {
    static std::atomic<std::uint64_t> number{0};
    return ++number;
}

}

PictureDecoder::PictureDecoder(std::filesystem::path const& file, MovieReaderOptions const& options)
    : source_(file)
    , decoder_(openDecoder(source_, options))
    , packet_(av_packet_alloc())
    , turn_(turnOf(source_.stream()))
    , number_(nextReaderNumber()) {
    if (!packet_) throw std::bad_alloc();
}

VideoFrame PictureDecoder::readFirst() {
    auto first = read(Damage::accept);
    if (first.isEmpty()) ffmpeg::throwReading(source_.file(), Kind::unreadable, "no picture of it can be decoded");
    return first;
}

VideoFrame PictureDecoder::read() { return read(Damage::skip); }

VideoFrame PictureDecoder::read(Damage damage) {
    ffmpeg::Frame frame(av_frame_alloc());
    if (!frame) throw std::bad_alloc();
    for (int fruitless = 0; fruitless < fruitlessLimit; ++fruitless) {
        auto const code = avcodec_receive_frame(decoder_.get(), frame.get());
        if (code == 0) {
            auto const ticks = ticksOf(*frame);
            if (isWanted(*frame, ticks, damage)) return wrapped(std::move(frame), ticks);
            av_frame_unref(frame.get());
        } else if (code == AVERROR_EOF || (code == AVERROR(EAGAIN) && isDraining_)) {
            return {};
        } else if (code == AVERROR(EAGAIN)) {
            feed();
        }
    }
    return {};
}

void PictureDecoder::feed() {
    auto* packet = packet_.get();
    if (!source_.read(*packet)) {
        isDraining_ = true;
        avcodec_send_packet(decoder_.get(), nullptr);
        return;
    }
    auto const isKey = (packet->flags & AV_PKT_FLAG_KEY) != 0;
    if (packet->dts != noTicks) lastPacket_ = packet->dts;
    if (awaitsKeyFrame_ && isKey) {
        awaitsKeyFrame_ = false;
        keptFrom_ = packet->pts;
    }
    // A packet that the decoder refuses is a damaged one; the next may be whole.
    if (!awaitsKeyFrame_) avcodec_send_packet(decoder_.get(), packet);
    av_packet_unref(packet);
}

std::int64_t PictureDecoder::ticksOf(AVFrame const& frame) const {
    if (frame.best_effort_timestamp != noTicks) return frame.best_effort_timestamp;
    if (lastTicks_ == noTicks) return 0;
    auto const rate = source_.stream().r_frame_rate;
    auto const interval = rate.num > 0 && rate.den > 0 ? av_q2d(av_inv_q(rate)) : 1.0 / 30;
    return lastTicks_ + std::max<std::int64_t>(1, source_.ticks(interval));
}

bool PictureDecoder::isWanted(AVFrame const& frame, std::int64_t ticks, Damage damage) const {
    if (frame.width <= 0 || frame.height <= 0) return false;
    if (damage == Damage::skip && (frame.flags & AV_FRAME_FLAG_CORRUPT)) return false;
    if (keptFrom_ != noTicks && ticks < keptFrom_) return false;
    return lastTicks_ == noTicks || ticks > lastTicks_;
}

VideoFrame PictureDecoder::wrapped(ffmpeg::Frame frame, std::int64_t ticks) {
    if (origin_ == noTicks) beginClock(ticks);
    lastTicks_ = ticks;
    auto picture = std::make_shared<VideoFrame::Picture>();
    picture->frame = std::move(frame);
    setUprightSize(*picture, av_guess_sample_aspect_ratio(&source_.format(), &source_.stream(), picture->frame.get()));
    picture->turn = turn_;
    picture->ticks = ticks;
    picture->time = clock_.seconds(ticks);
    picture->identity = number_ << 44 | (static_cast<std::uint64_t>(ticks - origin_) & ((std::uint64_t{1} << 44) - 1));
    return VideoFrame(std::move(picture));
}

void PictureDecoder::beginClock(std::int64_t origin) {
    origin_ = origin;
    clock_ = FrameClock(source_.stream().time_base, origin);
    if (!clock_.isCoarse()) return;
    surveyed_ = source_.frameTimes();
    clock_.keepTo(surveyed_, source_.toldRate());
}

bool PictureDecoder::seek(std::int64_t ticks) {
    if (!source_.seek(ticks)) return false;
    forgetPlace();
    awaitsKeyFrame_ = true;
    return true;
}

void PictureDecoder::startOver() {
    source_.rewind();
    forgetPlace();
}

void PictureDecoder::forgetPlace() {
    avcodec_flush_buffers(decoder_.get());
    lastTicks_ = lastPacket_ = keptFrom_ = noTicks;
    awaitsKeyFrame_ = isDraining_ = false;
}

bool PictureDecoder::isSeekWorthwhile(std::int64_t ticks, std::int64_t readTo) const {
    auto const ahead = source_.seconds(ticks - readTo);
    if (ahead < nearbySeconds) return false;
    if (!source_.hasWholeIndex()) return ahead > usualKeyFrameSeconds;
    auto const key = source_.keyFrameBefore(ticks);
    return key && lastPacket_ != noTicks && *key > lastPacket_;
}

// A frame of a steady movie lasts one beat, whatever else the file holds for longer; the last one lasts as long as it
// is said to where that is more.
double PictureDecoder::steadyEnd(double told) const {
    auto const interval = 1 / *clock_.rate();
    auto const last = clock_.seconds(*surveyed_.end());
    auto const lasts = source_.seconds(surveyed_.lastDuration);
    if (lasts > 1.5 * interval) return last + lasts;
    bool const isAlone = source_.hasOnlyPictures();
    return isAlone && told > last + 2.5 * interval ? told : last + interval;
}

MovieInfo PictureDecoder::describe() {
    auto info = source_.describe(origin_);
    if (auto const rate = clock_.rate()) {
        info.frameRate = *rate;
        info.duration = steadyEnd(info.duration);
    }
    if (auto const* format = av_pix_fmt_desc_get(decoder_->pix_fmt)) info.bitDepth = format->comp[0].depth;
    return info;
}

}
