#include <TavaroCapture/V4L2/Private/VideoCameras.h>

#include <TavaroCapture/Camera/Private/ReopenedCamera.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/V4L2/Private/CameraForms.h>
#include <TavaroCapture/V4L2/Private/VideoStream.h>
#include <TavaroCore/Errors/SystemReason.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <fmt/format.h>
#include <utility>

namespace tavaro::v4l2 {

namespace {

/// A camera by what stays the same when it is plugged in again.
struct Identity {
    std::string id;
    std::string name;
    std::string bus;
};

struct Found {
    VideoNode node;
    CameraDescription description;
    std::unique_ptr<VideoDevice> device;
};

[[noreturn]] void fail(std::string const& sentence) { throw CaptureError(CaptureError::Kind::noCamera, sentence); }

/// None for what is no camera, or cannot be opened.
std::optional<Found> looked(VideoSystem const& system, VideoNode const& node) {
    auto device = system.open(node.path);
    auto description = device ? described(*device) : std::nullopt;
    if (!description || modesOf(*device).empty()) return std::nullopt;
    return Found{node, std::move(*description), std::move(device)};
}

bool isNamed(VideoNode const& node, std::string const& id) {
    return id == node.id || id == node.path || id == node.path.filename();
}

/// By its id first: two cameras may have one name.
std::optional<Found> found(VideoSystem const& system, std::string const& id) {
    auto const nodes = system.nodes();
    std::optional<Found> namesake;
    for (auto const& node : nodes) {
        bool const isMeant = id.empty() || isNamed(node, id);
        if (isMeant) errno = 0;
        auto camera = looked(system, node);
        if (camera && isMeant) return camera;
        bool const isBarred = !camera && (errno == EACCES || errno == EPERM);
        if (isMeant && !id.empty() && isBarred)
            fail(fmt::format("The camera “{}” cannot be used: {}.", id, systemReason(errno)));
        if (camera && !namesake && camera->description.name == id) namesake = std::move(camera);
    }
    return namesake;
}

CameraMode modeOf(Found const& camera) { return *chosenMode(modesOf(*camera.device)); }

std::unique_ptr<CameraFeed> streamOf(Found camera, CameraMode const& mode) {
    return std::make_unique<VideoStream>(std::move(camera.device), mode, camera.description.name);
}

/// The same camera, which may have got another node.
std::unique_ptr<CameraFeed> reopened(VideoSystem const& system, Identity const& wanted, CameraMode const& mode) {
    for (auto const& node : system.nodes()) {
        bool const isNumbered = node.id == node.path.filename();
        if (!isNumbered && node.id != wanted.id) continue;
        auto camera = looked(system, node);
        if (!camera || camera->description.name != wanted.name) continue;
        if (!isNumbered || camera->description.bus == wanted.bus) return streamOf(std::move(*camera), mode);
    }
    return nullptr;
}

}

std::vector<CameraInfo> cameras(VideoSystem const& system) {
    std::vector<CameraInfo> result;
    for (auto const& node : system.nodes())
        if (auto const camera = looked(system, node))
            result.push_back({node.id, camera->description.name, result.empty()});
    return result;
}

std::unique_ptr<CameraSource> openCamera(std::shared_ptr<VideoSystem const> const& system,
                                         CameraDeviceSource const& source) {
    auto camera = found(*system, source.id);
    if (!camera) return nullptr;
    auto const mode = modeOf(*camera);
    Identity const identity{camera->node.id, camera->description.name, camera->description.bus};
    auto const lag = source.lags.find(identity.id);
    auto const tried = streamOf(std::move(*camera), mode);
    return std::make_unique<ReopenedCamera>(
        ReopenedCamera::Options{.open = [system, identity, mode] { return reopened(*system, identity, mode); },
                                .id = identity.id,
                                .size = ReopenedCamera::filmedSize(tried->format()),
                                .fps = std::clamp(static_cast<int>(std::lround(tried->fps())), 1, 120),
                                .lag = lag == source.lags.end() ? 0 : lag->second});
}

}
