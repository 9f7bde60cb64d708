#include <TavaroCapture/V4L2/Private/CameraForms.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <linux/videodev2.h>
#include <utility>

namespace tavaro::v4l2 {

namespace {

// A driver that never says "no more" is not asked for ever.
constexpr std::uint32_t mostEntries = 256;

constexpr std::array<std::pair<DeviceLayout, std::uint32_t>, 6> layouts{{
    {DeviceLayout::yuyv, V4L2_PIX_FMT_YUYV},
    {DeviceLayout::uyvy, V4L2_PIX_FMT_UYVY},
    {DeviceLayout::nv12, V4L2_PIX_FMT_NV12},
    {DeviceLayout::yuv420, V4L2_PIX_FMT_YUV420},
    {DeviceLayout::bgrx, V4L2_PIX_FMT_XBGR32},
    {DeviceLayout::jpeg, V4L2_PIX_FMT_MJPEG},
}};

template<std::size_t size> std::string textOf(__u8 const (&bytes)[size]) {
    auto const* const text = reinterpret_cast<char const*>(bytes);
    return {text, strnlen(text, size)};
}

double rateOf(v4l2_fract const& interval) {
    return interval.numerator > 0 ? double{1} * interval.denominator / interval.numerator : 0;
}

/// The nearest to the usual rate; 0 where the device does not say.
double rateOf(VideoDevice& device, std::uint32_t format, CameraSize const& size) {
    double best = 0;
    auto const wanted = usualCameraMode.fps;
    for (std::uint32_t i = 0; i < mostEntries; ++i) {
        v4l2_frmivalenum entry{};
        entry.index = i;
        entry.pixel_format = format;
        entry.width = static_cast<std::uint32_t>(size.width);
        entry.height = static_cast<std::uint32_t>(size.height);
        if (device.control(VIDIOC_ENUM_FRAMEINTERVALS, &entry) < 0) break;
        if (entry.type != V4L2_FRMIVAL_TYPE_DISCRETE)
            return std::clamp(wanted, rateOf(entry.stepwise.max),
                              std::max(rateOf(entry.stepwise.max), rateOf(entry.stepwise.min)));
        double const rate = rateOf(entry.discrete);
        if (best == 0 || std::abs(rate - wanted) < std::abs(best - wanted)) best = rate;
    }
    return best;
}

bool isWithin(v4l2_frmsize_stepwise const& limits, CameraSize const& size) {
    auto const fits = [](int side, std::uint32_t least, std::uint32_t most, std::uint32_t step) {
        auto const length = static_cast<std::uint32_t>(side);
        return length >= least && length <= most && (length - least) % std::max(step, 1u) == 0;
    };
    return fits(size.width, limits.min_width, limits.max_width, limits.step_width) &&
           fits(size.height, limits.min_height, limits.max_height, limits.step_height);
}

CameraSize presentSize(VideoDevice& device) {
    v4l2_format format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    if (device.control(VIDIOC_G_FMT, &format) < 0) return {};
    return {static_cast<int>(format.fmt.pix.width), static_cast<int>(format.fmt.pix.height)};
}

std::vector<CameraSize> sizesOf(VideoDevice& device, std::uint32_t format) {
    std::vector<CameraSize> result;
    for (std::uint32_t i = 0; i < mostEntries; ++i) {
        v4l2_frmsizeenum entry{};
        entry.index = i;
        entry.pixel_format = format;
        if (device.control(VIDIOC_ENUM_FRAMESIZES, &entry) < 0) break;
        if (entry.type != V4L2_FRMSIZE_TYPE_DISCRETE) {
            std::ranges::copy_if(usualCameraSizes(), std::back_inserter(result),
                                 [&](CameraSize const& size) { return isWithin(entry.stepwise, size); });
            break;
        }
        result.push_back({static_cast<int>(entry.discrete.width), static_cast<int>(entry.discrete.height)});
    }
    if (result.empty()) result.push_back(presentSize(device));
    std::erase_if(result, [](CameraSize const& size) {
        return size.width < 2 || size.height < 2 || size.width > 16384 || size.height > 16384;
    });
    return result;
}

}

std::uint32_t pixelFormat(DeviceLayout layout) {
    auto const found = std::ranges::find(layouts, layout, &std::pair<DeviceLayout, std::uint32_t>::first);
    return found == layouts.end() ? 0 : found->second;
}

std::optional<DeviceLayout> layoutOf(std::uint32_t format) {
    if (format == V4L2_PIX_FMT_JPEG) return DeviceLayout::jpeg;
    auto const found = std::ranges::find(layouts, format, &std::pair<DeviceLayout, std::uint32_t>::second);
    if (found == layouts.end()) return std::nullopt;
    return found->first;
}

std::optional<CameraDescription> described(VideoDevice& device) {
    v4l2_capability about{};
    if (device.control(VIDIOC_QUERYCAP, &about) < 0) return std::nullopt;
    auto const can = about.capabilities & V4L2_CAP_DEVICE_CAPS ? about.device_caps : about.capabilities;
    constexpr std::uint32_t needed = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    if ((can & needed) != needed || (can & (V4L2_CAP_VIDEO_M2M | V4L2_CAP_TUNER))) return std::nullopt;
    return CameraDescription{textOf(about.card), textOf(about.bus_info)};
}

std::vector<CameraMode> modesOf(VideoDevice& device) {
    std::vector<CameraMode> result;
    for (std::uint32_t i = 0; i < mostEntries; ++i) {
        v4l2_fmtdesc entry{};
        entry.index = i;
        entry.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        if (device.control(VIDIOC_ENUM_FMT, &entry) < 0) break;
        auto const layout = layoutOf(entry.pixelformat);
        if (!layout) continue;
        for (auto const& size : sizesOf(device, entry.pixelformat))
            result.push_back({*layout, size.width, size.height, rateOf(device, entry.pixelformat, size)});
    }
    return result;
}

}
