#include <TavaroMedia/Audio/AudioGraph.h>

#include <algorithm>
#include <new>

#include <fmt/format.h>

#include <TavaroMedia/FFmpeg/Private/Failures.h>
#include <TavaroMedia/FFmpeg/Private/FilterLibrary.h>
#include <TavaroMedia/FFmpeg/Private/Handles.h>

extern "C" {
#include <libavutil/channel_layout.h>
}

namespace tavaro {

namespace {

constexpr std::size_t frameSamples = 1024;

[[noreturn]] void fail(std::string const& detail) {
    throw MediaError(MediaError::Kind::unsupported, "The sound could not be processed: " + detail + ".", detail);
}

void check(int code) {
    if (code == AVERROR(ENOMEM)) throw std::bad_alloc();
    if (code < 0) fail(ffmpeg::reason(code));
}

struct FreeGraph {
    void operator()(AVFilterGraph* graph) const { ffmpeg::filters().graphFree(&graph); }
};
struct FreeInOut {
    void operator()(AVFilterInOut* end) const { ffmpeg::filters().inOutFree(&end); }
};
using InOut = std::unique_ptr<AVFilterInOut, FreeInOut>;

InOut openEnd(char const* name, AVFilterContext* filter) {
    InOut end(ffmpeg::filters().inOutAlloc());
    if (!end) throw std::bad_alloc();
    end->name = av_strdup(name);
    end->filter_ctx = filter;
    return end;
}

}

struct AudioGraph::State {
    std::unique_ptr<AVFilterGraph, FreeGraph> graph;
    AVFilterContext* source = nullptr;
    AVFilterContext* sink = nullptr;
    ffmpeg::Frame frame{av_frame_alloc()};
    int channels = 2;
    std::int64_t pushed = 0;
    std::vector<StereoSample> waiting; // less than a frame

    State(std::string const& chain, int channelCount) : channels(channelCount) {
        auto const& library = ffmpeg::filters();
        graph.reset(library.graphAlloc());
        if (!graph || !frame) throw std::bad_alloc();
        graph->nb_threads = 1;
        auto const layout = channels == 1 ? "mono" : "stereo";
        create(source, "abuffer",
               fmt::format("time_base=1/{0}:sample_rate={0}:sample_fmt=flt:channel_layout={1}", audioRate, layout));
        create(sink, "abuffersink", "");
        auto const whole =
            fmt::format("{},aformat=sample_fmts=flt:sample_rates={}:channel_layouts={}", chain, audioRate, layout);
        auto* outputs = openEnd("in", source).release();
        auto* inputs = openEnd("out", sink).release();
        auto const code = library.graphParse(graph.get(), whole.c_str(), &inputs, &outputs, nullptr);
        InOut(outputs).reset();
        InOut(inputs).reset();
        check(code);
        check(library.graphConfig(graph.get(), nullptr));
    }

    void create(AVFilterContext*& filter, char const* name, std::string const& options) {
        auto const* kind = ffmpeg::filters().filterNamed(name);
        if (!kind) fail(fmt::format("there is no filter '{}'", name));
        check(ffmpeg::filters().graphCreateFilter(&filter, kind, name, options.c_str(), nullptr, graph.get()));
    }

    void send(std::span<StereoSample const> samples) {
        frame->format = AV_SAMPLE_FMT_FLT;
        frame->sample_rate = audioRate;
        frame->nb_samples = static_cast<int>(samples.size());
        av_channel_layout_default(&frame->ch_layout, channels);
        check(av_frame_get_buffer(frame.get(), 0));
        frame->pts = pushed;
        pushed += std::ssize(samples);
        auto* out = reinterpret_cast<float*>(frame->data[0]);
        if (channels == 1) {
            std::ranges::transform(samples, out, &StereoSample::left);
        } else {
            std::ranges::copy(samples, reinterpret_cast<StereoSample*>(out));
        }
        check(ffmpeg::filters().sourceAddFrame(source, frame.get(), AV_BUFFERSRC_FLAG_PUSH));
        av_frame_unref(frame.get());
    }
};

AudioGraph::AudioGraph(std::string const& chain, int channels) : state_(std::make_unique<State>(chain, channels)) {}
AudioGraph::AudioGraph(AudioGraph&&) noexcept = default;
AudioGraph& AudioGraph::operator=(AudioGraph&&) noexcept = default;
AudioGraph::~AudioGraph() = default;

void AudioGraph::push(std::span<StereoSample const> samples) {
    auto& waiting = state_->waiting;
    waiting.insert(waiting.end(), samples.begin(), samples.end());
    std::size_t done = 0;
    for (; waiting.size() - done >= frameSamples; done += frameSamples)
        state_->send(std::span(waiting).subspan(done, frameSamples));
    waiting.erase(waiting.begin(), waiting.begin() + static_cast<std::ptrdiff_t>(done));
}

void AudioGraph::finish() {
    if (!state_->waiting.empty()) state_->send(state_->waiting);
    state_->waiting.clear();
    check(ffmpeg::filters().sourceAddFrame(state_->source, nullptr, AV_BUFFERSRC_FLAG_PUSH));
}

void AudioGraph::pull(std::vector<StereoSample>& samples) {
    auto& frame = *state_->frame;
    while (true) {
        auto const code = ffmpeg::filters().sinkGetFrame(state_->sink, &frame);
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return;
        check(code);
        if (frame.format != AV_SAMPLE_FMT_FLT) fail("not floating-point audio");
        auto const count = static_cast<std::size_t>(frame.nb_samples);
        auto const* values = reinterpret_cast<float const*>(frame.data[0]);
        if (state_->channels == 1) {
            for (std::size_t i = 0; i < count; ++i) samples.push_back({values[i], values[i]});
        } else {
            auto const* pairs = reinterpret_cast<StereoSample const*>(values);
            samples.insert(samples.end(), pairs, pairs + count);
        }
        av_frame_unref(&frame);
    }
}

}
