#include <TavaroCapture/V4L2/Private/VideoStream.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/V4L2/Private/CameraForms.h>
#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <fmt/format.h>
#include <linux/videodev2.h>

namespace tavaro::v4l2 {

namespace {

// A fifth of a second: as long as this thread may be kept from running.
constexpr std::uint32_t buffersWanted = 6;
constexpr std::uint32_t leastBuffers = 2;
// More that are missing at once are a counter that jumped.
constexpr std::uint32_t mostMissed = 1000;
// A stamp that is not of this clock, whatever the driver says.
constexpr double oldestStamp = 1;

v4l2_buffer newBuffer(std::uint32_t index = 0) {
    v4l2_buffer buffer{};
    buffer.index = index;
    buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    buffer.memory = V4L2_MEMORY_MMAP;
    return buffer;
}

double momentOf(v4l2_buffer const& buffer, double now) {
    bool const isMonotonic = (buffer.flags & V4L2_BUF_FLAG_TIMESTAMP_MASK) == V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC;
    double const moment =
        static_cast<double>(buffer.timestamp.tv_sec) + static_cast<double>(buffer.timestamp.tv_usec) * 1e-6;
    return isMonotonic && moment <= now && moment > now - oldestStamp ? moment : now;
}

/// What the driver leaves open is as cameras usually have it.
DeviceMatrix matrixOf(v4l2_pix_format const& format) {
    bool const isDefault = format.ycbcr_enc == V4L2_YCBCR_ENC_DEFAULT;
    bool const is709 =
        format.ycbcr_enc == V4L2_YCBCR_ENC_709 || (isDefault && format.colorspace == V4L2_COLORSPACE_REC709);
    return is709 ? DeviceMatrix::bt709 : DeviceMatrix::bt601;
}

}

VideoStream::VideoStream(std::unique_ptr<VideoDevice> device, CameraMode const& mode, std::string name)
    : device_(std::move(device))
    , name_(std::move(name)) {
    setFormat(mode);
    setRate(mode.fps > 0 ? mode.fps : usualCameraMode.fps);
    lendBuffers();
}

VideoStream::~VideoStream() {
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    if (isStreaming_) device_->control(VIDIOC_STREAMOFF, &type);
}

void VideoStream::fail(int errorNumber) const {
    if (errorNumber == EBUSY)
        throw CaptureError(CaptureError::Kind::noCamera,
                           fmt::format("The camera “{}” is in use by another program.", name_));
    throw CaptureError(CaptureError::Kind::noCamera,
                       fmt::format("The camera “{}” cannot be used: {}.", name_, systemReason(errorNumber)));
}

void VideoStream::setFormat(CameraMode const& mode) {
    if (tryFormat(mode, pixelFormat(mode.layout))) return;
    // Some call the JPEGs of a film by the name of a still one.
    if (mode.layout == DeviceLayout::jpeg && tryFormat(mode, V4L2_PIX_FMT_JPEG)) return;
    throw CaptureError(CaptureError::Kind::noCamera,
                       fmt::format("The camera “{}” does not give the pictures that it offers.", name_));
}

/// False where the device takes another one.
bool VideoStream::tryFormat(CameraMode const& mode, std::uint32_t pixelFormat) {
    v4l2_format wanted{};
    wanted.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    auto& pixels = wanted.fmt.pix;
    pixels.width = static_cast<std::uint32_t>(mode.width);
    pixels.height = static_cast<std::uint32_t>(mode.height);
    pixels.pixelformat = pixelFormat;
    pixels.field = V4L2_FIELD_ANY;
    if (device_->control(VIDIOC_S_FMT, &wanted) < 0) fail(errno);
    if (pixels.pixelformat != pixelFormat || pixels.width < 2 || pixels.height < 2) return false;
    format_ = {.layout = mode.layout,
               .width = static_cast<int>(pixels.width),
               .height = static_cast<int>(pixels.height),
               .stride = static_cast<std::ptrdiff_t>(pixels.bytesperline),
               .matrix = matrixOf(pixels),
               .range = pixels.quantization == V4L2_QUANTIZATION_FULL_RANGE ? DeviceRange::full : DeviceRange::limited};
    return true;
}

/// A device that cannot be told keeps its own.
void VideoStream::setRate(double fps) {
    fps_ = fps;
    v4l2_streamparm wanted{};
    wanted.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    wanted.parm.capture.timeperframe = {1000, static_cast<std::uint32_t>(std::lround(1000 * fps))};
    if (device_->control(VIDIOC_S_PARM, &wanted) < 0) return;
    auto const& interval = wanted.parm.capture.timeperframe;
    double const rate = interval.numerator > 0 ? double{1} * interval.denominator / interval.numerator : 0;
    if (rate >= 1 && rate <= 240) fps_ = rate;
}

void VideoStream::lendBuffers() {
    v4l2_requestbuffers wanted{};
    wanted.count = buffersWanted;
    wanted.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    wanted.memory = V4L2_MEMORY_MMAP;
    if (device_->control(VIDIOC_REQBUFS, &wanted) < 0) fail(errno);
    if (wanted.count < leastBuffers) fail(ENOMEM);
    for (std::uint32_t i = 0; i < wanted.count; ++i) {
        auto buffer = newBuffer(i);
        if (device_->control(VIDIOC_QUERYBUF, &buffer) < 0) fail(errno);
        buffers_.push_back({device_->map(buffer.length, buffer.m.offset)});
        if (buffers_.back().memory.empty()) fail(errno);
    }
}

bool VideoStream::queue(std::uint32_t index) {
    auto buffer = newBuffer(index);
    return device_->control(VIDIOC_QBUF, &buffer) >= 0;
}

bool VideoStream::begin() {
    if (isStreaming_) return true;
    for (std::uint32_t i = 0; i < buffers_.size(); ++i)
        if (!queue(i)) return false;
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    isStreaming_ = device_->control(VIDIOC_STREAMON, &type) >= 0;
    return isStreaming_;
}

bool VideoStream::run(std::chrono::milliseconds atMost, FunctionRef<void(FedPicture const&)> take) {
    if (!begin()) return false;
    int const ready = device_->poll(static_cast<int>(atMost.count()));
    if (ready < 0) return errno == EINTR;
    if (ready == 0) return true;
    // As many as there can be: a camera that is quicker than its reader must not keep it here.
    for (std::size_t i = 0; i < buffers_.size(); ++i) {
        auto const fetched = fetch(take);
        if (fetched == Fetched::none) return i > 0 || device_->poll(0) == 0;
        if (fetched == Fetched::gone) return false;
    }
    return true;
}

VideoStream::Fetched VideoStream::fetch(FunctionRef<void(FedPicture const&)> take) {
    auto buffer = newBuffer();
    if (device_->control(VIDIOC_DQBUF, &buffer) < 0) return errno == EAGAIN ? Fetched::none : Fetched::gone;
    if (buffer.index >= buffers_.size()) return Fetched::gone;
    auto const memory = buffers_[buffer.index].memory;
    auto const used = std::min<std::size_t>(buffer.bytesused, memory.size());
    take({.bytes = memory.first(used),
          .capturedAt = momentOf(buffer, mediaClockNow()),
          .missedBefore = missedBefore(buffer.sequence),
          .isDamaged = (buffer.flags & V4L2_BUF_FLAG_ERROR) != 0});
    return queue(buffer.index) ? Fetched::picture : Fetched::gone;
}

std::int64_t VideoStream::missedBefore(std::uint32_t sequence) {
    auto const before = std::exchange(last_, sequence);
    std::uint32_t const step = before ? sequence - *before : 1;
    return step > 1 && step <= mostMissed ? step - 1 : 0;
}

}
