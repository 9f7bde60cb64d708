#include <TavaroCapture/PipeWire/Private/NodeForms.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <spa/param/video/format-utils.h>
#include <utility>

namespace tavaro::pipewire {

namespace {

constexpr std::array<std::pair<DeviceLayout, spa_video_format>, 8> layouts{{
    {DeviceLayout::yuyv, SPA_VIDEO_FORMAT_YUY2},
    {DeviceLayout::uyvy, SPA_VIDEO_FORMAT_UYVY},
    {DeviceLayout::nv12, SPA_VIDEO_FORMAT_NV12},
    {DeviceLayout::yuv420, SPA_VIDEO_FORMAT_I420},
    {DeviceLayout::bgrx, SPA_VIDEO_FORMAT_BGRx},
    {DeviceLayout::rgbx, SPA_VIDEO_FORMAT_RGBx},
    {DeviceLayout::bgrx, SPA_VIDEO_FORMAT_BGRA},
    {DeviceLayout::rgbx, SPA_VIDEO_FORMAT_RGBA},
}};

/// A value of a property, or the values between which one may choose: the first is the usual one.
template<class Value> struct Choice {
    std::vector<Value> values;
    bool isRange = false; // usual, least, most
};

template<class Value> Choice<Value> choiceOf(spa_pod const* object, std::uint32_t key) {
    auto const* const property = spa_pod_find_prop(object, nullptr, key);
    if (!property) return {};
    std::uint32_t count = 0, kind = SPA_CHOICE_None;
    auto const* const first = spa_pod_get_values(&property->value, &count, &kind);
    if (!first || count == 0 || first->size != sizeof(Value)) return {};
    auto const* const values = static_cast<Value const*>(SPA_POD_BODY_CONST(first));
    bool const isRange = (kind == SPA_CHOICE_Range || kind == SPA_CHOICE_Step) && count >= 3;
    if (kind == SPA_CHOICE_None) count = 1;
    return {{values, values + count}, isRange};
}

double rateOf(spa_fraction const& rate) { return rate.denom > 0 ? double{1} * rate.num / rate.denom : 0; }

/// The nearest to the usual rate; 0 where the node does not say.
double rateIn(Choice<spa_fraction> const& choice) {
    auto const wanted = usualCameraMode.fps;
    if (choice.values.empty()) return 0;
    if (choice.isRange)
        return std::clamp(wanted, rateOf(choice.values[1]),
                          std::max(rateOf(choice.values[1]), rateOf(choice.values[2])));
    double best = rateOf(choice.values[0]);
    for (auto const& value : choice.values)
        if (std::abs(rateOf(value) - wanted) < std::abs(best - wanted)) best = rateOf(value);
    return best;
}

std::vector<CameraSize> sizesIn(Choice<spa_rectangle> const& choice) {
    std::vector<CameraSize> result;
    auto const add = [&](spa_rectangle const& size) {
        if (size.width >= 2 && size.height >= 2 && size.width <= 16384 && size.height <= 16384)
            result.push_back({static_cast<int>(size.width), static_cast<int>(size.height)});
    };
    if (!choice.isRange) {
        for (auto const& size : choice.values) add(size);
        return result;
    }
    add(choice.values[0]);
    auto const isWithin = [&](CameraSize const& size) {
        auto const &least = choice.values[1], &most = choice.values[2];
        auto const width = static_cast<std::uint32_t>(size.width), height = static_cast<std::uint32_t>(size.height);
        return width >= least.width && width <= most.width && height >= least.height && height <= most.height;
    };
    std::ranges::copy_if(usualCameraSizes(), std::back_inserter(result), isWithin);
    return result;
}

std::vector<DeviceLayout> layoutsIn(spa_pod const* parameter) {
    std::uint32_t type = 0, subtype = 0;
    if (spa_format_parse(parameter, &type, &subtype) < 0 || type != SPA_MEDIA_TYPE_video) return {};
    if (subtype == SPA_MEDIA_SUBTYPE_mjpg) return {DeviceLayout::jpeg};
    if (subtype != SPA_MEDIA_SUBTYPE_raw) return {};
    std::vector<DeviceLayout> result;
    for (auto const format : choiceOf<std::uint32_t>(parameter, SPA_FORMAT_VIDEO_format).values) {
        auto const found = std::ranges::find(layouts, format, &std::pair<DeviceLayout, spa_video_format>::second);
        bool const isNew = found != layouts.end() && std::ranges::count(result, found->first) == 0;
        if (isNew) result.push_back(found->first);
    }
    return result;
}

void addModes(std::vector<CameraMode>& modes, spa_pod const* parameter) {
    auto const rate = rateIn(choiceOf<spa_fraction>(parameter, SPA_FORMAT_VIDEO_framerate));
    auto const sizes = sizesIn(choiceOf<spa_rectangle>(parameter, SPA_FORMAT_VIDEO_size));
    for (auto const layout : layoutsIn(parameter))
        for (auto const& size : sizes) modes.push_back({layout, size.width, size.height, rate});
}

void takeParameter(void* into, int, std::uint32_t id, std::uint32_t, std::uint32_t, spa_pod const* parameter) {
    if (id == SPA_PARAM_EnumFormat && parameter) addModes(*static_cast<std::vector<CameraMode>*>(into), parameter);
}

}

std::vector<CameraMode> modesOf(Connection& connection, Node const& node) {
    std::vector<CameraMode> result;
    auto const proxy = connection.bind(node.id);
    if (!proxy) return result;
    static pw_node_events const events{.version = PW_VERSION_NODE_EVENTS, .param = takeParameter};
    spa_hook hook{};
    pw_node_add_listener(proxy.get(), &hook, &events, &result);
    pw_node_enum_params(proxy.get(), 0, SPA_PARAM_EnumFormat, 0, UINT32_MAX, nullptr);
    connection.settle(std::chrono::seconds(1));
    spa_hook_remove(&hook);
    return result;
}

}
