#include <TavaroRender/Audio/Private/Enhancement.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <exception>

#include <TavaroMedia/Audio/AudioGraph.h>
#include <TavaroMedia/Audio/AudioReader.h>
#include <TavaroMedia/Audio/NoiseReduction.h>
#include <TavaroMedia/Audio/PeakLimiter.h>
#include <TavaroPlatform/Queues/BoundedQueue.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

namespace tavaro {

namespace {

using Block = std::vector<StereoSample>;

constexpr std::size_t blockSamples = 1 << 14;
constexpr std::size_t blocksAhead = 8;
constexpr double filteringShare = 0.8; // of the whole work

constexpr double wantedLoudness = -16; // LUFS
// The limiter and a meter interpolate differently; the highest true peak wanted is −1.5 dBTP.
constexpr double ceiling = -1.7;
constexpr double mostGain = 40;     // dB; more would only lift the noise of what is nearly silent
constexpr double closeEnough = 0.2; // LU
constexpr int mostAttempts = 5;     // limiting takes some loudness, which is given back
constexpr double leastYield = 0.2;

/// Rumble goes, the dull part of the low tones is thinned, what makes speech understood is lifted, sharp s's are
/// softened, and the loudest syllables come nearer to the others.
constexpr char const* clarity = "highpass=f=75,equalizer=f=260:t=q:w=1:g=-2.5,equalizer=f=3200:t=q:w=0.9:g=2.5,"
                                "treble=f=9000:g=1.5,deesser=i=0.3:m=0.4:f=0.5,"
                                "acompressor=threshold=-24dB:ratio=2.5:attack=8:release=140:knee=4:makeup=1.6";

bool isMono(std::span<StereoSample const> samples) {
    return std::ranges::all_of(samples, [](StereoSample const& sample) { return sample.left == sample.right; });
}

/// The first half of the work, which runs beside the second: reads and takes the noise away.
class CleanBlocks {
public:
    CleanBlocks(std::filesystem::path const& file, EnhancementSettings const& settings, int channels)
        : reader_(file)
        , channels_(channels) {
        if (settings.noiseReduction) noise_.emplace(settings.noiseReductionStrength, channels);
        queue_.async([this] { run(); });
    }
    ~CleanBlocks() { blocks_.abandon(); }

    double duration() const { return reader_.info().duration; }
    /// None at the end; throws what reading threw.
    std::optional<Block> next() {
        auto block = blocks_.pop();
        if (!block && failure_) std::rethrow_exception(failure_);
        return block;
    }
    bool isNotMono() const { return isNotMono_; }

private:
    void run() {
        try {
            work();
        } catch (...) {
            failure_ = std::current_exception();
        }
        blocks_.close();
    }

    void work() {
        Block block(blockSamples);
        for (std::int64_t at = 0;; at += std::ssize(block)) {
            auto const count = reader_.read(at, block);
            auto const samples = std::span(block).first(count);
            if (channels_ == 1 && !isMono(samples)) {
                isNotMono_ = true;
                return;
            }
            Block clean;
            if (noise_) {
                noise_->process(samples, clean);
                if (count < block.size()) noise_->finish(clean);
            } else {
                clean.assign(samples.begin(), samples.end());
            }
            if (!clean.empty() && !blocks_.push(std::move(clean))) return;
            if (count < block.size()) return;
        }
    }

    AudioReader reader_;
    int const channels_;
    std::optional<NoiseReduction> noise_;
    BoundedQueue<Block> blocks_{blocksAhead};
    std::exception_ptr failure_; // set before the queue is closed
    std::atomic<bool> isNotMono_ = false;
    SerialQueue queue_{"com.tavaro.render.cleaning"}; // last: its work uses all of the above
};

}

Enhancement::Outcome Enhancement::filter(int channels, ScratchSound& sound, LoudnessMeter& meter) {
    CleanBlocks blocks(file_, settings_, channels);
    std::optional<AudioGraph> graph;
    if (settings_.voiceClarity) graph.emplace(clarity, channels);
    auto const keep = [&](Block const& block) {
        sound.append(block);
        if (settings_.normalize) meter.add(block);
    };
    auto const whole = std::max(blocks.duration() * audioRate, 1.0);
    while (auto block = blocks.next()) {
        if (graph) {
            graph->push(*block);
            block->clear();
            graph->pull(*block);
        }
        keep(*block);
        if (!report(filteringShare * std::min(static_cast<double>(sound.length()) / whole, 1.0)))
            return Outcome::stopped;
    }
    if (blocks.isNotMono()) return Outcome::notMono;
    if (graph) {
        Block rest;
        graph->finish();
        graph->pull(rest);
        keep(rest);
    }
    return Outcome::done;
}

std::optional<Enhancement::Written> Enhancement::writeWithGain(std::filesystem::path const& output,
                                                               ScratchSound const& sound, int channels,
                                                               double gainDecibels) {
    auto const gain = static_cast<float>(std::pow(10, gainDecibels / 20));
    Written written{AudioFileWriter(output, AudioFileFormat::whole16, channels), LoudnessMeter()};
    PeakLimiter limiter(ceiling);
    Block block(blockSamples);
    Block limited;
    auto const keep = [&] {
        written.writer.append(limited);
        if (settings_.normalize) written.meter.add(limited);
        limited.clear();
    };
    for (std::int64_t at = 0; at < sound.length(); at += std::ssize(block)) {
        auto const samples = std::span(block).first(sound.read(at, block));
        for (auto& sample : samples) sample = {sample.left * gain, sample.right * gain};
        limiter.process(samples, limited);
        keep();
        auto const share = static_cast<double>(at) / static_cast<double>(sound.length());
        if (!report(filteringShare + (1 - filteringShare) * share)) return std::nullopt;
    }
    limiter.finish(limited);
    keep();
    return written;
}

bool Enhancement::finish(std::filesystem::path const& output, ScratchSound const& sound, int channels,
                         LoudnessMeter const& meter) {
    auto const measured = settings_.normalize ? meter.integrated() : std::nullopt;
    double loudness = measured.value_or(wantedLoudness);
    double gain = 0;
    double yield = 1; // what a decibel of gain gives; less, the more is limited
    for (int attempt = 0;; ++attempt) {
        auto const next = std::clamp(gain + (wantedLoudness - loudness) / yield, -mostGain, mostGain);
        auto written = writeWithGain(output, sound, channels, next);
        if (!written) return false;
        auto const now = measured ? written->meter.integrated() : std::nullopt;
        if (!now || std::abs(wantedLoudness - *now) <= closeEnough || next == gain || attempt == mostAttempts) {
            written->writer.finish();
            report(1);
            return true;
        }
        yield = std::clamp((*now - loudness) / (next - gain), leastYield, 1.0);
        gain = next;
        loudness = *now;
    }
}

bool Enhancement::write(std::filesystem::path const& output) {
    // Most microphones have one channel, though many a file repeats it on both sides: half the work.
    for (int const channels : {1, 2}) {
        ScratchSound sound(output.parent_path(), channels);
        LoudnessMeter meter;
        auto const outcome = filter(channels, sound, meter);
        if (outcome == Outcome::notMono) continue;
        return outcome == Outcome::done && finish(output, sound, channels, meter);
    }
    return false;
}

}
