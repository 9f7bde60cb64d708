#include <TavaroCapture/PipeWire/Private/PipeWireCameras.h>

#include <TavaroCapture/Camera/Private/ReopenedCamera.h>
#include <TavaroCapture/PipeWire/Private/NodeFeed.h>
#include <TavaroCapture/PipeWire/Private/NodeForms.h>
#include <TavaroCapture/Sources/CaptureError.h>

#include <algorithm>
#include <cmath>
#include <optional>

namespace tavaro::pipewire {

namespace {

/// What somebody casts of a screen has another role, or none.
bool isCamera(Node const& node) {
    return node.mediaClass == "Video/Source" && node.role == "Camera" && !node.path.starts_with("v4l2:");
}

CameraInfo described(Node const& node) { return {node.name, node.description.empty() ? node.name : node.description}; }

std::vector<Node> camerasOf(Connection& connection) {
    if (!connection.settle(std::chrono::seconds(1))) return {};
    auto nodes = connection.nodes();
    std::erase_if(nodes, [](Node const& node) { return !isCamera(node); });
    return nodes;
}

std::optional<Node> found(Connection& connection, std::string const& id) {
    auto const nodes = camerasOf(connection);
    auto const isMeant = [&](Node const& node) { return id.empty() || node.name == id; };
    auto best = std::ranges::find_if(nodes, isMeant);
    if (best == nodes.end())
        best = std::ranges::find_if(nodes, [&](Node const& node) { return described(node).name == id; });
    if (best == nodes.end()) return std::nullopt;
    return *best;
}

std::unique_ptr<CameraFeed> reopened(std::string const& id, CameraMode const& mode) {
    auto connection = std::make_unique<Connection>();
    auto const node = found(*connection, id);
    if (!node || node->name != id) return nullptr;
    return std::make_unique<NodeFeed>(std::move(connection), *node, mode);
}

}

std::vector<CameraInfo> cameras() {
    Connection connection;
    std::vector<CameraInfo> result;
    for (auto const& node : camerasOf(connection)) {
        result.push_back(described(node));
        result.back().isDefault = result.size() == 1;
    }
    return result;
}

std::unique_ptr<CameraSource> openCamera(CameraDeviceSource const& source) {
    Connection connection;
    auto const node = found(connection, source.id);
    if (!node) return nullptr;
    auto const mode = chosenMode(modesOf(connection, *node));
    if (!mode)
        throw CaptureError(CaptureError::Kind::noCamera,
                           "The camera “" + described(*node).name + "” gives no pictures that can be read here.");
    auto const id = node->name;
    auto const lag = source.lags.find(id);
    DeviceFormat const format{.layout = mode->layout, .width = mode->width, .height = mode->height};
    ReopenedCamera::Options options{.open = [id, mode = *mode] { return reopened(id, mode); },
                                    .id = id,
                                    .size = ReopenedCamera::filmedSize(format)};
    if (mode->fps > 0) options.fps = std::clamp(static_cast<int>(std::lround(mode->fps)), 1, 120);
    if (lag != source.lags.end()) options.lag = lag->second;
    return std::make_unique<ReopenedCamera>(std::move(options));
}

}
