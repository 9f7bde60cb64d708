#include "FakeVideo.h"

#include "../Camera/Timecode.h"

#include <TavaroCapture/V4L2/Private/CameraForms.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <deque>
#include <linux/videodev2.h>
#include <stdexcept>
#include <thread>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace tavaro::v4l2 {

namespace {

using Bytes = std::vector<std::uint8_t>;

/// Grey with a timecode, by rows of luma.
Bytes lumaAt(CameraMode const& mode, std::int64_t microseconds) {
    Bytes luma(static_cast<std::size_t>(mode.width) * static_cast<std::size_t>(mode.height), 100);
    for (int y = 0; y < timecode::squares / timecode::squaresInARow * timecode::side; ++y)
        for (int x = 0; x < timecode::squaresInARow * timecode::side; ++x)
            luma[static_cast<std::size_t>(y * mode.width + x)] =
                timecode::isWhite(microseconds, timecode::squareAt(x, y)) ? 235 : 16;
    return luma;
}

/// Makes a JPEG of each picture.
class JPEGs {
public:
    explicit JPEGs(CameraMode const& mode)
        : context_(avcodec_alloc_context3(avcodec_find_encoder(AV_CODEC_ID_MJPEG)))
        , frame_(av_frame_alloc())
        , packet_(av_packet_alloc()) {
        context_->width = frame_->width = mode.width;
        context_->height = frame_->height = mode.height;
        context_->pix_fmt = AV_PIX_FMT_YUVJ420P;
        frame_->format = context_->pix_fmt;
        context_->time_base = {1, 30};
        if (avcodec_open2(context_, nullptr, nullptr) < 0 || av_frame_get_buffer(frame_, 0) < 0)
            throw std::runtime_error("no encoder of JPEGs");
    }
    ~JPEGs() {
        avcodec_free_context(&context_);
        av_frame_free(&frame_);
        av_packet_free(&packet_);
    }
    JPEGs(JPEGs const&) = delete;
    JPEGs& operator=(JPEGs const&) = delete;

    Bytes made(Bytes const& luma) {
        av_frame_make_writable(frame_);
        for (int y = 0; y < frame_->height; ++y)
            std::memcpy(frame_->data[0] + y * frame_->linesize[0], luma.data() + y * frame_->width,
                        static_cast<std::size_t>(frame_->width));
        for (int plane = 1; plane < 3; ++plane)
            std::memset(frame_->data[plane], 128,
                        static_cast<std::size_t>(frame_->linesize[plane] * frame_->height / 2));
        ++frame_->pts;
        if (avcodec_send_frame(context_, frame_) < 0 || avcodec_receive_packet(context_, packet_) < 0) return {};
        Bytes result(packet_->data, packet_->data + packet_->size);
        av_packet_unref(packet_);
        return result;
    }

private:
    AVCodecContext* context_;
    AVFrame* frame_;
    AVPacket* packet_;
};

Bytes packed(Bytes const& luma) {
    Bytes result(2 * luma.size(), 128);
    for (std::size_t i = 0; i < luma.size(); ++i) result[2 * i] = luma[i];
    return result;
}

Bytes withGreyChroma(Bytes luma) {
    luma.resize(luma.size() * 3 / 2, 128);
    return luma;
}

int failing(int error) {
    errno = error;
    return -1;
}

template<class Entry> int among(std::vector<Entry> const& entries, std::uint32_t index) {
    return index < entries.size() ? 0 : failing(EINVAL);
}

class Device final : public VideoDevice {
public:
    explicit Device(std::shared_ptr<FakeCamera> camera) : camera_(std::move(camera)), mode_(camera_->modes.at(0)) {}
    ~Device() override { setStreaming(false); }

    int control(unsigned long request, void* argument) override;
    std::span<std::uint8_t const> map(std::size_t length, std::int64_t offset) override {
        return std::span(buffers_.at(static_cast<std::size_t>(offset) / pageSize)).first(length);
    }
    int poll(int milliseconds) override {
        double const end = mediaClockNow() + milliseconds * 1e-3;
        while (camera_->isPlugged && !hasPicture()) {
            if (mediaClockNow() >= end) return 0;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return 1;
    }

private:
    static constexpr std::size_t pageSize = 4 << 20;

    std::int64_t due() const { return std::llround(std::floor((mediaClockNow() - start_) * mode_.fps)); }
    bool hasPicture() const { return isStreaming_ && !camera_->isFrozen && !queued_.empty() && due() >= next(); }
    bool isNth(int every) const { return every > 0 && sequence_ % every == every - 1; }
    std::int64_t next() const {
        return std::max(sequence_ + (isNth(camera_->skippedEvery) ? 2 : 1), due() - std::ssize(queued_) + 1);
    }
    std::vector<std::uint32_t> formats() const;
    std::vector<CameraMode> modesIn(std::uint32_t format) const;
    int setFormat(v4l2_format& wanted);
    int lend(v4l2_requestbuffers& wanted);
    int setStreaming(bool isOn);
    int fill(v4l2_buffer& buffer);
    Bytes picture(std::int64_t microseconds);

    std::shared_ptr<FakeCamera> const camera_;
    CameraMode mode_;
    std::vector<Bytes> buffers_;
    std::deque<std::uint32_t> queued_;
    std::unique_ptr<JPEGs> jpegs_;
    bool isStreaming_ = false;
    double start_ = 0;
    std::int64_t sequence_ = -1;
};

std::vector<std::uint32_t> Device::formats() const {
    std::vector<std::uint32_t> result;
    if (camera_->otherFormat) result.push_back(camera_->otherFormat);
    for (auto const& mode : camera_->modes)
        if (std::ranges::count(result, pixelFormat(mode.layout)) == 0) result.push_back(pixelFormat(mode.layout));
    return result;
}

std::vector<CameraMode> Device::modesIn(std::uint32_t format) const {
    auto result = camera_->modes;
    std::erase_if(result, [&](CameraMode const& mode) { return pixelFormat(mode.layout) != format; });
    return result;
}

int Device::setFormat(v4l2_format& wanted) {
    while (camera_->hangsInFormat) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (camera_->isTaken) return failing(EBUSY);
    auto& pixels = wanted.fmt.pix;
    for (auto const& mode : camera_->modes)
        if (pixelFormat(mode.layout) == pixels.pixelformat && mode.width == static_cast<int>(pixels.width) &&
            mode.height == static_cast<int>(pixels.height))
            mode_ = mode;
    pixels.pixelformat = pixelFormat(mode_.layout);
    pixels.width = static_cast<std::uint32_t>(mode_.width);
    pixels.height = static_cast<std::uint32_t>(mode_.height);
    pixels.bytesperline = mode_.layout == DeviceLayout::yuyv ? 2 * pixels.width : 0;
    return 0;
}

int Device::lend(v4l2_requestbuffers& wanted) {
    wanted.count = std::min(wanted.count, 4u);
    buffers_.assign(wanted.count, Bytes(pageSize));
    return 0;
}

int Device::setStreaming(bool isOn) {
    if (isOn != isStreaming_) camera_->streams += isOn ? 1 : -1;
    isStreaming_ = isOn;
    start_ = mediaClockNow();
    sequence_ = -1;
    return 0;
}

Bytes Device::picture(std::int64_t microseconds) {
    auto luma = lumaAt(mode_, microseconds);
    if (mode_.layout == DeviceLayout::yuyv) return packed(luma);
    if (mode_.layout != DeviceLayout::jpeg) return withGreyChroma(std::move(luma));
    if (!jpegs_) jpegs_ = std::make_unique<JPEGs>(mode_);
    return jpegs_->made(luma);
}

/// A device fills what it was lent as pictures come, and loses those for which it has nothing left.
int Device::fill(v4l2_buffer& buffer) {
    if (!hasPicture()) return failing(EAGAIN);
    sequence_ = next();
    buffer.index = queued_.front();
    queued_.pop_front();
    auto const microseconds = std::llround(1e6 * (start_ + static_cast<double>(sequence_) / mode_.fps));
    auto const bytes = picture(microseconds);
    std::ranges::copy(bytes, buffers_[buffer.index].begin());
    buffer.bytesused = static_cast<std::uint32_t>(isNth(camera_->cutEvery) ? bytes.size() / 2 : bytes.size());
    buffer.flags = V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC;
    if (isNth(camera_->flawedEvery)) buffer.flags |= V4L2_BUF_FLAG_ERROR;
    buffer.timestamp = {microseconds / 1'000'000, microseconds % 1'000'000};
    buffer.sequence = static_cast<std::uint32_t>(sequence_);
    return 0;
}

int Device::control(unsigned long request, void* argument) {
    while (camera_->hangs) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (!camera_->isPlugged) return failing(ENODEV);
    switch (request) {
    case VIDIOC_QUERYCAP: {
        auto& about = *static_cast<v4l2_capability*>(argument);
        camera_->name.copy(reinterpret_cast<char*>(about.card), sizeof about.card);
        camera_->bus.copy(reinterpret_cast<char*>(about.bus_info), sizeof about.bus_info);
        auto const usual = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
        about.device_caps = camera_->capabilities ? camera_->capabilities : usual;
        about.capabilities = usual | V4L2_CAP_DEVICE_CAPS;
        return 0;
    }
    case VIDIOC_ENUM_FMT: {
        auto& entry = *static_cast<v4l2_fmtdesc*>(argument);
        if (entry.index < formats().size()) entry.pixelformat = formats()[entry.index];
        return among(formats(), entry.index);
    }
    case VIDIOC_ENUM_FRAMESIZES: {
        auto& entry = *static_cast<v4l2_frmsizeenum*>(argument);
        auto const modes = modesIn(entry.pixel_format);
        entry.type = V4L2_FRMSIZE_TYPE_DISCRETE;
        if (entry.index < modes.size())
            entry.discrete = {static_cast<std::uint32_t>(modes[entry.index].width),
                              static_cast<std::uint32_t>(modes[entry.index].height)};
        return among(modes, entry.index);
    }
    case VIDIOC_ENUM_FRAMEINTERVALS: {
        auto& entry = *static_cast<v4l2_frmivalenum*>(argument);
        auto modes = modesIn(entry.pixel_format);
        std::erase_if(modes, [&](CameraMode const& mode) { return mode.width != static_cast<int>(entry.width); });
        entry.type = V4L2_FRMIVAL_TYPE_DISCRETE;
        if (entry.index < modes.size())
            entry.discrete = {1, static_cast<std::uint32_t>(std::lround(modes[entry.index].fps))};
        return among(modes, entry.index);
    }
    case VIDIOC_S_FMT: return setFormat(*static_cast<v4l2_format*>(argument));
    case VIDIOC_S_PARM: return failing(ENOTTY);
    case VIDIOC_REQBUFS: return lend(*static_cast<v4l2_requestbuffers*>(argument));
    case VIDIOC_QUERYBUF: {
        auto& buffer = *static_cast<v4l2_buffer*>(argument);
        buffer.length = pageSize;
        buffer.m.offset = buffer.index * pageSize;
        return among(buffers_, buffer.index);
    }
    case VIDIOC_QBUF: queued_.push_back(static_cast<v4l2_buffer*>(argument)->index); return 0;
    case VIDIOC_DQBUF: return fill(*static_cast<v4l2_buffer*>(argument));
    case VIDIOC_STREAMON: return setStreaming(true);
    case VIDIOC_STREAMOFF: return setStreaming(false);
    default: return failing(ENOTTY);
    }
}

}

std::vector<VideoNode> FakeVideo::nodes() const {
    std::lock_guard const guard(lock_);
    std::vector<VideoNode> result;
    for (auto const& camera : cameras_)
        if (camera->isPlugged)
            result.push_back({camera->path, camera->id.empty() ? camera->path.substr(5) : camera->id});
    return result;
}

std::shared_ptr<FakeCamera> FakeVideo::at(std::filesystem::path const& path) const {
    std::lock_guard const guard(lock_);
    auto const found =
        std::ranges::find_if(cameras_, [&](auto const& camera) { return camera->isPlugged && camera->path == path; });
    return found == cameras_.end() ? nullptr : *found;
}

std::unique_ptr<VideoDevice> FakeVideo::open(std::filesystem::path const& path) const {
    auto const camera = at(path);
    if (!camera || camera->isBarred) {
        errno = camera ? EACCES : ENOENT;
        return nullptr;
    }
    ++camera->openings;
    while (camera->opensNever) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return std::make_unique<Device>(camera);
}

void FakeVideo::plug(FakeCamera& camera, std::string path) const {
    std::lock_guard const guard(lock_);
    camera.path = std::move(path);
    camera.isPlugged = true;
}

}
