#include <TavaroMedia/Movie/MovieWriter.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <string>

#include <TavaroMedia/Audio/Private/AudioEncoder.h>
#include <TavaroMedia/FFmpeg/Private/Failures.h>
#include <TavaroMedia/FFmpeg/Private/OutputStream.h>
#include <TavaroMedia/Frames/Private/EncoderPlanes.h>
#include <TavaroMedia/Movie/Private/Encoder.h>
#include <TavaroMedia/Movie/Private/RateBudget.h>

namespace tavaro {

namespace {

using Kind = MediaError::Kind;

// Fragments of half a second: a killed writer has lost less than the last second.
constexpr char const* fragmentMicroseconds = "500000";

MovieWriterSettings checked(std::filesystem::path const& file, MovieWriterSettings settings) {
    settings.width &= ~1;
    settings.height &= ~1;
    if (settings.width < 2 || settings.height < 2 || settings.width > 16384 || settings.height > 16384)
        ffmpeg::throwWriting(file, Kind::refused, "its size must be between 2 and 16384 pixels on each side");
    if (settings.fps < 1 || settings.fps > 1000)
        ffmpeg::throwWriting(file, Kind::refused, "its frame rate must be between 1 and 1000 frames a second");
    if (settings.codec == MovieCodec::proRes422 && settings.container != MovieContainer::mov)
        ffmpeg::throwWriting(file, Kind::refused, "ProRes goes into a MOV file only");
    if (settings.sound == MovieSound::pcm && settings.container != MovieContainer::mov)
        ffmpeg::throwWriting(file, Kind::refused, "uncompressed sound goes into a MOV file only");
    auto const needsBitrate = settings.codec != MovieCodec::proRes422 && settings.intent == MovieIntent::finished;
    if (needsBitrate && settings.bitrate < 1000)
        ffmpeg::throwWriting(file, Kind::refused, "its bit rate must be at least 1000 bits a second");
    return settings;
}

ffmpeg::Place place(MovieIntent intent) {
    return intent == MovieIntent::live ? ffmpeg::Place::growingForOwner : ffmpeg::Place::beside;
}

std::optional<AudioEncoder> makeAudioEncoder(std::filesystem::path const& file, MovieSound sound) {
    if (sound == MovieSound::none) return std::nullopt;
    return AudioEncoder(file, sound == MovieSound::aac ? AudioCoding::aac : AudioCoding::pcm24, 2);
}

char const* formatName(MovieContainer container) { return container == MovieContainer::mov ? "mov" : "mp4"; }

ffmpeg::Dictionary containerOptions(MovieIntent intent) {
    if (intent == MovieIntent::finished) return ffmpeg::indexInFront();
    AVDictionary* options = nullptr;
    av_dict_set(&options, "movflags", "+empty_moov+default_base_moof", 0);
    av_dict_set(&options, "frag_duration", fragmentMicroseconds, 0);
    return ffmpeg::Dictionary(options);
}

}

struct MovieWriter::State {
    MovieWriterSettings settings;
    VideoEncoder video;
    ffmpeg::CodecContext const& encoder = video.context;
    std::optional<AudioEncoder> audioEncoder;
    EncoderPicturePool pool;
    ffmpeg::OutputStream output;
    ffmpeg::Packet packet{av_packet_alloc()};
    ffmpeg::Packet held{
        av_packet_alloc()}; // the newest packet, back by one: the last one's duration is known at the end
    bool isHolding = false;
    std::int64_t lastTicks = -1; // of the newest picture
    std::int64_t frames = 0;
    RateBudget budget;
    std::int64_t lastPacketTicks = -1;

    State(std::filesystem::path const& file, MovieWriterSettings const& wanted)
        : settings(checked(file, wanted))
        , video((ffmpeg::prepareLibraries(), openEncoder(file, settings)))
        , audioEncoder(makeAudioEncoder(file, settings.sound))
        , pool(settings.width, settings.height, video.drawn)
        , output(file, place(settings.intent), formatName(settings.container))
        , budget(settings.bitrate) {
        if (!packet || !held) throw std::bad_alloc();
        begin();
    }

    void begin() {
        auto& stream = output.addStream();
        output.check(avcodec_parameters_from_context(stream.codecpar, encoder.get()));
        stream.time_base = encoder->time_base;
        stream.avg_frame_rate = encoder->framerate;
        stream.sample_aspect_ratio = encoder->sample_aspect_ratio;
        // Players of the system that made the format take HEVC under this tag only.
        if (settings.codec == MovieCodec::hevc) stream.codecpar->codec_tag = MKTAG('h', 'v', 'c', '1');
        if (audioEncoder) audioEncoder->describe(output.addStream());
        if (settings.intent == MovieIntent::live) output.format().flags |= AVFMT_FLAG_FLUSH_PACKETS;
        output.begin(containerOptions(settings.intent));
    }

    std::int64_t ticks(double seconds) const {
        return static_cast<std::int64_t>(std::llround(seconds * encoder->time_base.den));
    }

    void send(AVFrame const* frame) {
        while (true) {
            auto const code = avcodec_send_frame(encoder.get(), frame);
            if (code != AVERROR(EAGAIN)) {
                if (code != AVERROR_EOF) output.check(code);
                break;
            }
            drain();
        }
        drain();
    }

    void drain() {
        while (true) {
            auto const code = avcodec_receive_packet(encoder.get(), packet.get());
            if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return;
            output.check(code);
            account();
            writeHeld();
            av_packet_move_ref(held.get(), packet.get());
            isHolding = true;
        }
    }

    void account() {
        auto const shown = lastPacketTicks < 0 ? encoder->time_base.den / settings.fps : packet->pts - lastPacketTicks;
        lastPacketTicks = packet->pts;
        budget.spend(packet->size, static_cast<double>(shown) / encoder->time_base.den);
    }

    /// A film that needs coarser levels than its encoder's bound goes on, from a key frame, with one that has none.
    void keepToTheRate() {
        if (!video.hasLevelBound || !budget.isOverdrawn()) return;
        send(nullptr);
        video.context.reset(); // two at once would take twice the memory
        auto repaying = settings;
        repaying.bitrate = budget.repayingRate();
        video = openSoftwareEncoder(output.file(), repaying, LevelBound::none);
    }

    void writeHeld() {
        if (!isHolding) return;
        isHolding = false;
        output.write(*held, encoder->time_base);
    }

    void drainAudio() {
        while (audioEncoder->receive(*packet)) output.write(*packet, audioTimeBase, 1);
    }

    void writeRest(std::optional<double> endTime) {
        if (frames == 0) ffmpeg::throwWriting(output.file(), Kind::refused, "there is no frame to write");
        send(nullptr);
        if (audioEncoder) {
            audioEncoder->finish();
            drainAudio();
        }
        auto const frameTicks = encoder->time_base.den / settings.fps;
        auto const end = endTime ? std::max(ticks(*endTime), lastTicks + 1) : lastTicks + frameTicks;
        if (isHolding) held->duration = end - lastTicks;
        writeHeld();
    }
};

MovieWriter::MovieWriter(std::filesystem::path const& file, MovieWriterSettings const& settings)
    : state_(std::make_unique<State>(file, settings)) {}
MovieWriter::MovieWriter(MovieWriter&&) noexcept = default;
MovieWriter& MovieWriter::operator=(MovieWriter&&) noexcept = default;
MovieWriter::~MovieWriter() = default;

int MovieWriter::width() const { return state_->settings.width; }
int MovieWriter::height() const { return state_->settings.height; }
std::int64_t MovieWriter::framesAppended() const { return state_->frames; }
EncoderPicture MovieWriter::picture() { return state_->pool.take(); }

void MovieWriter::append(EncoderPicture picture, double presentationTime) {
    auto& state = *state_;
    auto const file = state.output.file();
    if (!(presentationTime >= 0 && presentationTime < 1e7))
        ffmpeg::throwWriting(file, Kind::refused, "a frame's time is outside the movie");
    auto const ticks = state.ticks(presentationTime);
    if (ticks <= state.lastTicks)
        ffmpeg::throwWriting(file, Kind::refused, "a frame's time is not after the one before it");
    auto& frame = *picture.planes().frame;
    frame.pts = ticks;
    state.lastTicks = ticks;
    auto const* converted = state.video.input.converted(&frame, *state.encoder);
    if (!converted) ffmpeg::throwWriting(file, Kind::refused, "the video hardware takes no more frames");
    state.send(converted);
    state.keepToTheRate();
    ++state.frames;
}

void MovieWriter::appendAudio(std::span<StereoSample const> samples) {
    auto& state = *state_;
    if (!state.audioEncoder) ffmpeg::throwWriting(state.output.file(), Kind::refused, "it was begun without sound");
    state.audioEncoder->send(samples);
    state.drainAudio();
}

std::int64_t MovieWriter::samplesAppended() const {
    return state_->audioEncoder ? state_->audioEncoder->samplesSent() : 0;
}

void MovieWriter::finish(std::optional<double> endTime) {
    state_->writeRest(endTime);
    state_->output.commit();
}

std::filesystem::path MovieWriter::finishUnderUnusedName(std::filesystem::path const& wanted,
                                                         std::optional<double> endTime) {
    state_->writeRest(endTime);
    return state_->output.commitUnderUnusedName(wanted);
}

}
