#include <TavaroMedia/Movie/JoinMovies.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <optional>

#include <TavaroMedia/FFmpeg/Private/Failures.h>
#include <TavaroMedia/FFmpeg/Private/OutputStream.h>
#include <TavaroMedia/Movie/Private/MovieSource.h>

namespace tavaro {

namespace {

using Kind = MediaError::Kind;

bool isSameCoding(AVCodecParameters const& a, AVCodecParameters const& b) {
    return a.codec_id == b.codec_id && a.width == b.width && a.height == b.height &&
           a.extradata_size == b.extradata_size &&
           (a.extradata_size == 0 ||
            std::memcmp(a.extradata, b.extradata, static_cast<std::size_t>(a.extradata_size)) == 0);
}

char const* formatName(std::filesystem::path const& file) { return file.extension() == ".mp4" ? "mp4" : "mov"; }

/// One run over the parts. A packet is written when the next one is known, since it lasts until then.
class Joining {
public:
    explicit Joining(std::filesystem::path const& output)
        : output_(output, ffmpeg::Place::besideForOwner, formatName(output))
        , packet_(av_packet_alloc())
        , held_(av_packet_alloc()) {
        if (!packet_ || !held_) throw std::bad_alloc();
    }

    /// `until` is where the next part starts.
    void add(MoviePart const& part, double until) {
        auto source = opened(part.file);
        if (!source) return;
        std::optional<std::int64_t> first;
        auto const framesBefore = result_.frameCount;
        while (source->read(*packet_)) {
            if (!isBegun_) begin(source->stream());
            if (!isSameCoding(*source->stream().codecpar, *parameters_))
                ffmpeg::throwReading(part.file, Kind::unsupported, "it is encoded otherwise than the parts before it");
            if (!first) first = packet_->pts == AV_NOPTS_VALUE ? packet_->dts : packet_->pts;
            place(*source, *first == AV_NOPTS_VALUE ? 0 : *first, part.start, until);
        }
        if (result_.frameCount == framesBefore) result_.unreadable.push_back(part.file);
    }

    JoinedMovie finish() {
        if (!isBegun_) ffmpeg::throwReading(output_.file(), Kind::unreadable, "none of its parts can be read");
        writeHeld();
        result_.duration = av_q2d(timeBase_) * static_cast<double>(end_);
        output_.commit();
        return std::move(result_);
    }

private:
    struct FreeParameters {
        void operator()(AVCodecParameters* parameters) const { avcodec_parameters_free(&parameters); }
    };

    std::optional<MovieSource> opened(std::filesystem::path const& file) {
        try {
            return MovieSource(file);
        } catch (MediaError const&) {
            result_.unreadable.push_back(file);
            return std::nullopt;
        }
    }

    void begin(AVStream const& source) {
        parameters_.reset(avcodec_parameters_alloc());
        if (!parameters_) throw std::bad_alloc();
        output_.check(avcodec_parameters_copy(parameters_.get(), source.codecpar));
        auto& stream = output_.addStream();
        output_.check(avcodec_parameters_copy(stream.codecpar, source.codecpar));
        timeBase_ = source.time_base;
        stream.time_base = timeBase_;
        stream.avg_frame_rate = source.avg_frame_rate;
        stream.sample_aspect_ratio = source.sample_aspect_ratio;
        output_.begin(ffmpeg::indexInFront());
        isBegun_ = true;
    }

    void place(MovieSource const& source, std::int64_t first, double start, double until) {
        auto& packet = *packet_;
        auto const offset = static_cast<std::int64_t>(std::llround(start / av_q2d(timeBase_)));
        auto const moved = [&](std::int64_t ticks) {
            return av_rescale_q(ticks - first, source.stream().time_base, timeBase_) + offset;
        };
        packet.duration =
            std::max<std::int64_t>(1, av_rescale_q(packet.duration, source.stream().time_base, timeBase_));
        if (packet.pts == AV_NOPTS_VALUE) packet.pts = packet.dts;
        if (packet.dts == AV_NOPTS_VALUE) packet.dts = packet.pts;
        packet.pts = moved(packet.pts);
        packet.dts = moved(packet.dts);
        auto const isLate = static_cast<double>(packet.pts) * av_q2d(timeBase_) > until - 1e-6;
        if (isLate || (isHolding_ && packet.dts <= held_->dts)) {
            av_packet_unref(&packet);
            return;
        }
        writeHeld();
        av_packet_move_ref(held_.get(), &packet);
        isHolding_ = true;
        end_ = std::max(end_, held_->pts + held_->duration);
        if (result_.frameCount++ == 0) result_.start = av_q2d(timeBase_) * static_cast<double>(held_->pts);
    }

    void writeHeld() {
        if (isHolding_) output_.write(*held_, timeBase_);
        isHolding_ = false;
    }

    ffmpeg::OutputStream output_;
    ffmpeg::Packet packet_;
    ffmpeg::Packet held_;
    std::unique_ptr<AVCodecParameters, FreeParameters> parameters_;
    AVRational timeBase_ = {1, 1};
    std::int64_t end_ = 0;
    bool isBegun_ = false;
    bool isHolding_ = false;
    JoinedMovie result_;
};

}

JoinedMovie joinMovies(std::vector<MoviePart> const& parts, std::filesystem::path const& output) {
    Joining joining(output);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        auto const isLast = i + 1 == parts.size();
        joining.add(parts[i], isLast ? std::numeric_limits<double>::infinity() : parts[i + 1].start);
    }
    return joining.finish();
}

}
