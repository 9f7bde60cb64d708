#include <TavaroMedia/GIF/Private/PictureFilter.h>

#include <cerrno>
#include <new>
#include <utility>

#include <fmt/format.h>

#include <TavaroMedia/FFmpeg/Private/Failures.h>
#include <TavaroMedia/FFmpeg/Private/FilterLibrary.h>

namespace tavaro {

void PictureFilter::FreeGraph::operator()(AVFilterGraph* graph) const { ffmpeg::filters().graphFree(&graph); }

void PictureFilter::check(int code) const { ffmpeg::checkWriting(file_, code); }

PictureFilter::PictureFilter(std::string file, char const* filter, std::string const& options)
    : file_(std::move(file)) {
    ffmpeg::prepareLibraries();
    graph_.reset(ffmpeg::filters().graphAlloc());
    if (!graph_) throw std::bad_alloc();
    graph_->nb_threads = 1;
    auto const create = [&](AVFilterContext** to, char const* name, std::string const& arguments) {
        auto const* kind = ffmpeg::filters().filterNamed(name);
        check(kind ? 0 : AVERROR_FILTER_NOT_FOUND);
        check(ffmpeg::filters().graphCreateFilter(to, kind, name, arguments.c_str(), nullptr, graph_.get()));
    };
    create(&filter_, filter, options);
    create(&sink_, "buffersink", "");
}

PictureFilter::~PictureFilter() = default;

void PictureFilter::addInput(int width, int height) {
    auto const arguments = fmt::format("video_size={}x{}:pix_fmt={}:time_base={}/{}:pixel_aspect=1/1", width, height,
                                       static_cast<int>(format), ticks.num, ticks.den);
    AVFilterContext* input = nullptr;
    check(ffmpeg::filters().graphCreateFilter(&input, ffmpeg::filters().filterNamed("buffer"),
                                              fmt::format("in{}", inputs_.size()).c_str(), arguments.c_str(), nullptr,
                                              graph_.get()));
    check(ffmpeg::filters().link(input, 0, filter_, static_cast<unsigned>(inputs_.size())));
    inputs_.push_back(input);
}

void PictureFilter::begin() {
    check(ffmpeg::filters().link(filter_, 0, sink_, 0));
    check(ffmpeg::filters().graphConfig(graph_.get(), nullptr));
}

void PictureFilter::put(std::size_t input, AVFrame& frame) {
    check(
        ffmpeg::filters().sourceAddFrame(inputs_[input], &frame, AV_BUFFERSRC_FLAG_KEEP_REF | AV_BUFFERSRC_FLAG_PUSH));
}

void PictureFilter::end(std::size_t input) {
    check(ffmpeg::filters().sourceAddFrame(inputs_[input], nullptr, AV_BUFFERSRC_FLAG_PUSH));
}

ffmpeg::Frame PictureFilter::take() {
    ffmpeg::Frame frame(av_frame_alloc());
    if (!frame) throw std::bad_alloc();
    auto const code = ffmpeg::filters().sinkGetFrame(sink_, frame.get());
    if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return nullptr;
    check(code);
    return frame;
}

}
