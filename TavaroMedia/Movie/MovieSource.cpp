#include <TavaroMedia/Movie/Private/MovieSource.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <span>
#include <string_view>
#include <utility>

#include <TavaroMedia/FFmpeg/Private/Failures.h>
#include <TavaroMedia/FFmpeg/Private/OpenInput.h>

namespace tavaro {

namespace {

using Kind = MediaError::Kind;

// So many unreadable packets in a row, and the rest is not worth trying.
constexpr int unreadableLimit = 256;

// Two seconds at the fastest rates, and enough to tell 23.976 from 24 frames a second.
constexpr std::size_t framesSurveyed = 240;

std::int64_t timeOf(AVPacket const& packet) { return packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts; }

/// The times of the next frames, or of the last ones of all that follow, in the order of showing.
class FrameSurvey {
public:
    explicit FrameSurvey(MovieSource& source) : source_(source), packet_(av_packet_alloc()) {
        if (!packet_) throw std::bad_alloc();
    }

    std::vector<std::int64_t> next() {
        while (times_.size() < framesSurveyed && read()) {
        }
        return sorted();
    }

    std::vector<std::int64_t> latest() {
        while (read()) {
            if (times_.size() >= 2 * framesSurveyed)
                times_.erase(times_.begin(), times_.begin() + static_cast<std::ptrdiff_t>(framesSurveyed));
        }
        return sorted();
    }

    bool hasEnded() const { return hasEnded_; }
    std::int64_t lastDuration() const { return lastDuration_; }

private:
    bool read() {
        hasEnded_ = !source_.read(*packet_);
        if (hasEnded_) return false;
        auto const time = timeOf(*packet_);
        if (time != AV_NOPTS_VALUE) {
            if (times_.empty() || time > latest_) lastDuration_ = packet_->duration;
            latest_ = times_.empty() ? time : std::max(latest_, time);
            times_.push_back(time);
        }
        av_packet_unref(packet_.get());
        return true;
    }

    std::vector<std::int64_t> sorted() {
        std::ranges::sort(times_);
        return std::exchange(times_, {});
    }

    MovieSource& source_;
    ffmpeg::Packet packet_;
    std::vector<std::int64_t> times_;
    std::int64_t latest_ = 0;
    std::int64_t lastDuration_ = 0;
    bool hasEnded_ = false;
};

}

MovieSource::MovieSource(std::filesystem::path const& file) : file_(file) { open(); }

void MovieSource::open() {
    stream_ = nullptr;
    input_.reset();
    input_ = ffmpeg::openInput(file_);
    for (auto* stream : std::span(input_->streams, input_->nb_streams)) {
        auto const isWanted = !stream_ && ffmpeg::isPicture(*stream);
        if (isWanted) stream_ = stream;
        stream->discard = isWanted ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    }
    if (!stream_)
        throw MediaError(Kind::noVideoTrack, "The movie '" + file_.filename().string() + "' has no video track.",
                         "it has no video track");
    if (stream_->time_base.num <= 0 || stream_->time_base.den <= 0) ffmpeg::throwReading(file_, AVERROR_INVALIDDATA);
}

bool MovieSource::read(AVPacket& packet) {
    for (int unreadable = 0; unreadable < unreadableLimit;) {
        auto const code = av_read_frame(input_.get(), &packet);
        if (code == AVERROR_EOF) return false;
        if (code < 0) {
            ++unreadable;
            continue;
        }
        if (packet.stream_index == stream_->index) {
            if (!(packet.flags & AV_PKT_FLAG_CORRUPT)) return true;
            ++unreadable;
        }
        av_packet_unref(&packet);
    }
    return false;
}

bool MovieSource::seek(std::int64_t ticks) {
    return av_seek_frame(input_.get(), stream_->index, ticks, AVSEEK_FLAG_BACKWARD) >= 0;
}

void MovieSource::rewind() { open(); }

std::optional<std::int64_t> MovieSource::keyFrameBefore(std::int64_t ticks) const {
    auto const index = av_index_search_timestamp(stream_, ticks, AVSEEK_FLAG_BACKWARD);
    auto const* entry = index >= 0 ? avformat_index_get_entry(stream_, index) : nullptr;
    if (!entry) return std::nullopt;
    return entry->timestamp;
}

double MovieSource::seconds(std::int64_t ticks) const {
    return static_cast<double>(ticks) * stream_->time_base.num / stream_->time_base.den;
}

std::int64_t MovieSource::ticks(double seconds) const {
    auto const ticks = seconds * stream_->time_base.den / stream_->time_base.num;
    return static_cast<std::int64_t>(std::floor(std::clamp(ticks, -1e17, 1e17)));
}

bool MovieSource::hasWholeIndex() const {
    return std::string_view(input_->iformat->name).find("mp4") != std::string_view::npos &&
           avformat_index_get_entries_count(stream_) > 0;
}

// A whole index tells which frames the file ends before, without reading them.
void MovieSource::describeFromIndex(MovieInfo& info, std::int64_t firstFrameTicks) const {
    auto const count = avformat_index_get_entries_count(stream_);
    auto const fileSize = avio_size(input_->pb);
    if (!hasWholeIndex() || fileSize <= 0) return;
    std::int64_t present = 0;
    auto cutAt = std::numeric_limits<std::int64_t>::max();
    for (int i = 0; i < count; ++i) {
        auto const* entry = avformat_index_get_entry(stream_, i);
        if (entry->pos + entry->size > fileSize) {
            cutAt = std::min(cutAt, entry->timestamp);
        } else {
            ++present;
        }
    }
    info.isCutShort = present < count;
    info.frameCount = present;
    if (info.isCutShort) info.duration = seconds(cutAt - firstFrameTicks);
}

std::int64_t MovieSource::scannedEnd() const {
    MovieSource other(file_); // the place of this one stays
    ffmpeg::Packet packet(av_packet_alloc());
    if (!packet) throw std::bad_alloc();
    std::int64_t end = 0;
    while (other.read(*packet)) {
        auto const time = timeOf(*packet);
        end = std::max(end, (time != AV_NOPTS_VALUE ? time : end) + packet->duration);
        av_packet_unref(packet.get());
    }
    return end;
}

bool MovieSource::seekEnd() {
    auto const start = input_->start_time == AV_NOPTS_VALUE ? 0 : input_->start_time;
    return input_->duration > 0 && seek(ticks(static_cast<double>(start + input_->duration) / AV_TIME_BASE));
}

FrameTimes MovieSource::frameTimes() const {
    MovieSource other(file_); // the place of this one stays
    FrameTimes times;
    FrameSurvey survey(other);
    times.first = survey.next();
    if (!survey.hasEnded()) {
        other.seekEnd();
        times.last = survey.latest();
    }
    times.lastDuration = survey.lastDuration();
    return times;
}

std::optional<AVRational> MovieSource::toldRate() const {
    auto const rate = stream_->avg_frame_rate.num > 0 ? stream_->avg_frame_rate : stream_->r_frame_rate;
    if (rate.num <= 0 || rate.den <= 0) return std::nullopt;
    return rate;
}

MovieInfo MovieSource::describe(std::int64_t firstFrameTicks) const {
    MovieInfo info;
    if (auto const rate = toldRate()) info.frameRate = av_q2d(*rate);
    info.codec = avcodec_get_name(stream_->codecpar->codec_id);
    info.hasAudio = std::ranges::any_of(std::span(input_->streams, input_->nb_streams), [](AVStream const* stream) {
        return stream->codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
    });
    if (stream_->nb_frames > 0) info.frameCount = stream_->nb_frames;
    if (stream_->duration > 0) {
        info.duration = seconds(stream_->duration);
    } else if (input_->duration > 0 && input_->duration_estimation_method != AVFMT_DURATION_FROM_BITRATE) {
        // Matroska tells the time of the end; the others tell how long it is from the start to the end.
        auto const isEnd = std::string_view(input_->iformat->name).starts_with("matroska");
        auto const start = isEnd || input_->start_time == AV_NOPTS_VALUE ? 0 : input_->start_time;
        info.duration = static_cast<double>(start + input_->duration) / AV_TIME_BASE - seconds(firstFrameTicks);
    }
    describeFromIndex(info, firstFrameTicks);
    if (!(info.duration > 0)) info.duration = seconds(scannedEnd() - firstFrameTicks);
    info.duration = std::max(info.duration, info.frameRate > 0 ? 1 / info.frameRate : 0.0);
    return info;
}

}
