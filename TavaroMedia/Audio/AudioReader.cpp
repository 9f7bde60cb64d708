#include <TavaroMedia/Audio/AudioReader.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <numeric>
#include <vector>

#include <TavaroMedia/Audio/Private/AudioDecoder.h>
#include <TavaroMedia/FFmpeg/Private/Failures.h>

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}

namespace tavaro {

namespace {

using Kind = MediaError::Kind;

constexpr std::int64_t sliceSamples = 4096; // resampled at a time

// A decoder and a resampler that start in the middle need so much sound before they give what they would have given.
constexpr std::int64_t warmUp = audioRate / 4;
constexpr std::int64_t decoderWarmUp = 8192; // of the file's samples; AAC with its extension needs 4096

// Nearer than this, reading on is as quick as jumping.
constexpr std::int64_t nearby = 2 * audioRate;

// Clocks that do not count samples waver by their rounding; only a larger step is a gap.
constexpr double waveringSeconds = 0.1;

// A gap of more than a day is a damaged time.
constexpr std::int64_t longestGapSeconds = 86'400;

/// Turns one format and channel layout into 48 kHz stereo, sample for sample from the place it is started at.
ffmpeg::Resampler makeResampler(AVFrame const& frame) {
    AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
    AVChannelLayout from = frame.ch_layout;
    if (from.order == AV_CHANNEL_ORDER_UNSPEC) av_channel_layout_default(&from, frame.ch_layout.nb_channels);
    SwrContext* raw = nullptr;
    auto code = swr_alloc_set_opts2(&raw, &stereo, AV_SAMPLE_FMT_FLT, audioRate, &from,
                                    static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
    ffmpeg::Resampler resampler(raw);
    if (code < 0 || !resampler) throwReadingAudio(Kind::unreadable, "could not allocate a buffer");
    // ITU-R BS.775, but a voice in the center is as loud as one on both sides. Nothing is scaled down: where many
    // channels together are louder than full scale, that is for whoever writes the sound to limit.
    av_opt_set_double(raw, "center_mix_level", 1, 0);
    constexpr std::array both{1.0, 1.0}; // one channel sounds as loud on each side as it is
    if (frame.ch_layout.nb_channels == 1) swr_set_matrix(raw, both.data(), 1);
    code = swr_init(raw);
    if (code < 0)
        throwReadingAudio(Kind::unsupported, std::to_string(frame.ch_layout.nb_channels) + " channels cannot be mixed");
    return resampler;
}

}

struct AudioReader::State {
    explicit State(std::filesystem::path const& file) : decoder(file), info(decoder.describe()) {
        auto const common = std::gcd(decoder.rate(), audioRate);
        fileUnit = decoder.rate() / common;
        outputUnit = audioRate / common;
    }

    AudioDecoder decoder;
    AudioInfo const info;
    ffmpeg::Resampler resampler;
    int format = -1; // of the resampler's input
    int channels = 0;
    std::int64_t fileUnit = 1; // so many samples of the file last exactly as long as `outputUnit` of the output
    std::int64_t outputUnit = 1;

    std::vector<StereoSample> ready; // resampled; from `taken` on not read yet
    std::size_t taken = 0;
    std::int64_t readyStart = 0; // position of the first one not read
    std::int64_t fed = 0;        // place, in the file's samples, of the next one for the resampler
    std::int64_t place = 0;      // of the frame that is being fed
    bool isPending = false;      // there is such a frame
    bool isFirst = true;         // no frame came since the start or the jump
    bool isJump = false;
    bool isEnded = false;

    std::size_t available() const { return ready.size() - taken; }
    std::int64_t readyEnd() const { return readyStart + static_cast<std::int64_t>(available()); }

    bool isWithinReach(std::int64_t position) const;
    void jump(std::int64_t position);
    void startAt(std::int64_t start);
    void startOver();
    void advance();
    void takeFrame();
    void settlePlace();
    void feedSilence(std::int64_t count);
    void feedFrame();
    void convert(std::uint8_t const** planes, int count);
    std::size_t take(std::int64_t position, std::span<StereoSample> samples);
};

bool AudioReader::State::isWithinReach(std::int64_t position) const {
    if (position < readyStart) return false;
    return isEnded || !decoder.isExact() || position <= readyEnd() + nearby;
}

void AudioReader::State::jump(std::int64_t position) {
    auto const start = (position - warmUp) / outputUnit * fileUnit;
    if (position <= warmUp || !decoder.isExact() || !decoder.seek(start - decoderWarmUp)) return startOver();
    startAt(start);
    isJump = true;
}

void AudioReader::State::startAt(std::int64_t start) {
    resampler.reset();
    ready.clear();
    taken = 0;
    readyStart = start / fileUnit * outputUnit;
    fed = start;
    isFirst = true;
    isPending = isEnded = isJump = false;
}

void AudioReader::State::startOver() {
    decoder.rewind();
    startAt(0);
}

/// Resamples the next slice, be it sound or a gap.
void AudioReader::State::advance() {
    if (!isPending) takeFrame();
    if (!isPending) return;
    if (place > fed) return feedSilence(std::min(place - fed, sliceSamples));
    feedFrame();
}

void AudioReader::State::takeFrame() {
    if (!decoder.read()) {
        if (resampler) convert(nullptr, 0); // what the resampler still holds
        isEnded = true;
        return;
    }
    settlePlace();
    if (isFirst && isJump && place > fed) return startOver(); // the index led too far
    if (place + decoder.frame().nb_samples <= fed) return;    // before what is wanted
    isFirst = false;
    isPending = true;
}

/// A clock that does not count samples only tells where sound starts, and where it is interrupted.
void AudioReader::State::settlePlace() {
    place = decoder.place();
    auto const step = static_cast<double>(place) - static_cast<double>(fed);
    auto const isWavering = !decoder.isExact() && !isFirst && std::abs(step) < waveringSeconds * decoder.rate();
    if (isWavering || step > static_cast<double>(longestGapSeconds) * decoder.rate()) place = fed;
}

void AudioReader::State::feedSilence(std::int64_t count) {
    auto const sampleFormat = static_cast<AVSampleFormat>(decoder.frame().format);
    auto const bytes = static_cast<std::size_t>(av_get_bytes_per_sample(sampleFormat)) * sliceSamples;
    auto const planes = static_cast<std::size_t>(decoder.frame().ch_layout.nb_channels);
    auto const isUnsigned = av_get_packed_sample_fmt(sampleFormat) == AV_SAMPLE_FMT_U8;
    std::vector<std::uint8_t> const zeros(bytes * planes, isUnsigned ? 0x80 : 0);
    std::vector<std::uint8_t const*> const pointers(planes, zeros.data());
    convert(const_cast<std::uint8_t const**>(pointers.data()), static_cast<int>(count));
    fed += count;
}

void AudioReader::State::feedFrame() {
    auto const& frame = decoder.frame();
    auto const skipped = fed - place;
    auto const count = std::min(frame.nb_samples - skipped, sliceSamples);
    auto const sampleFormat = static_cast<AVSampleFormat>(frame.format);
    auto const isPlanar = av_sample_fmt_is_planar(sampleFormat) != 0;
    auto const stride = av_get_bytes_per_sample(sampleFormat) * (isPlanar ? 1 : frame.ch_layout.nb_channels);
    auto const planes = static_cast<std::size_t>(isPlanar ? frame.ch_layout.nb_channels : 1);
    std::vector<std::uint8_t const*> pointers(planes);
    for (std::size_t i = 0; i < planes; ++i) pointers[i] = frame.extended_data[i] + skipped * stride;
    convert(pointers.data(), static_cast<int>(count));
    fed += count;
    isPending = fed < place + frame.nb_samples;
}

void AudioReader::State::convert(std::uint8_t const** planes, int count) {
    auto const& frame = decoder.frame();
    if (planes && (!resampler || format != frame.format || channels != frame.ch_layout.nb_channels)) {
        if (resampler) convert(nullptr, 0);
        resampler = makeResampler(frame);
        format = frame.format;
        channels = frame.ch_layout.nb_channels;
    }
    if (taken == ready.size()) {
        ready.clear();
        taken = 0;
    }
    auto const before = ready.size();
    auto const room = std::max(swr_get_out_samples(resampler.get(), count), 0) + 16;
    ready.resize(before + static_cast<std::size_t>(room));
    auto* out = reinterpret_cast<std::uint8_t*>(ready.data() + before);
    auto const written = swr_convert(resampler.get(), &out, room, planes, count);
    ready.resize(before + static_cast<std::size_t>(std::max(written, 0)));
    if (written < 0) throwReadingAudio(Kind::unreadable, ffmpeg::reason(written));
}

/// Copies what is ready from `position` on and forgets all up to there.
std::size_t AudioReader::State::take(std::int64_t position, std::span<StereoSample> samples) {
    auto const skipped =
        std::min(static_cast<std::size_t>(std::max<std::int64_t>(position - readyStart, 0)), available());
    taken += skipped;
    readyStart += static_cast<std::int64_t>(skipped);
    if (readyStart < position) return 0;
    auto const count = std::min(available(), samples.size());
    std::copy_n(ready.begin() + static_cast<std::ptrdiff_t>(taken), count, samples.begin());
    taken += count;
    readyStart += static_cast<std::int64_t>(count);
    return count;
}

AudioReader::AudioReader(std::filesystem::path const& file) : state_(std::make_unique<State>(file)) {}
AudioReader::AudioReader(AudioReader&&) noexcept = default;
AudioReader& AudioReader::operator=(AudioReader&&) noexcept = default;
AudioReader::~AudioReader() = default;

AudioInfo const& AudioReader::info() const { return state_->info; }
std::int64_t AudioReader::position() const { return state_->readyStart; }

std::size_t AudioReader::read(std::int64_t position, std::span<StereoSample> samples) {
    auto& state = *state_;
    auto const before = static_cast<std::size_t>(std::clamp<std::int64_t>(-position, 0, std::ssize(samples)));
    std::fill_n(samples.begin(), before, StereoSample{});
    auto filled = before;
    if (filled == samples.size()) return filled;
    position = std::max<std::int64_t>(position, 0);
    if (!state.isWithinReach(position)) state.jump(position);
    while (true) {
        auto const count = state.take(position, samples.subspan(filled));
        filled += count;
        position += static_cast<std::int64_t>(count);
        if (filled == samples.size()) return filled;
        if (state.isEnded && state.available() == 0) break;
        state.advance();
    }
    std::fill(samples.begin() + static_cast<std::ptrdiff_t>(filled), samples.end(), StereoSample{});
    return filled;
}

}
