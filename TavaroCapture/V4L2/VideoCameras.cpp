#include <TavaroCapture/V4L2/Private/VideoCameras.h>

#include <TavaroCapture/Camera/Private/ReopenedCamera.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/V4L2/Private/CameraForms.h>
#include <TavaroCapture/V4L2/Private/DriverCall.h>
#include <TavaroCapture/V4L2/Private/VideoStream.h>
#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroCore/Records/FunctionRef.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <exception>
#include <fmt/format.h>
#include <optional>
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
    std::vector<CameraMode> modes;
    std::unique_ptr<VideoDevice> device;
};

[[noreturn]] void fail(std::string const& sentence) { throw CaptureError(CaptureError::Kind::noCamera, sentence); }

[[noreturn]] void failSilent(std::string const& camera) {
    fail(fmt::format("The camera “{}” does not answer. Unplug it and plug it in again, or record without it.", camera));
}

/// None for what is no camera, or cannot be opened.
std::optional<Found> looked(VideoSystem const& system, VideoNode const& node) {
    auto device = system.open(node.path);
    auto description = device ? described(*device) : std::nullopt;
    if (!description) return std::nullopt;
    auto modes = modesOf(*device);
    if (modes.empty()) return std::nullopt;
    return Found{node, std::move(*description), std::move(modes), std::move(device)};
}

bool isNamed(VideoNode const& node, std::string const& id) {
    return id == node.id || id == node.path || id == node.path.filename();
}

/// What is at a node.
class Look {
public:
    Look(std::shared_ptr<VideoSystem const> const& system, VideoNode const& node)
        : seen_(std::make_shared<Seen>())
        , call_(*system, node, [system, node, seen = seen_] {
            errno = 0;
            seen->camera = looked(*system, node);
            seen->error = seen->camera ? 0 : errno;
            if (seen->camera) seen->camera->device.reset();
        }) {}

    /// To be called first.
    bool returns(DriverCall::Deadline until) { return call_.returns(until); }
    std::optional<Found>& camera() { return seen_->camera; }
    bool isBarred() const { return seen_->error == EACCES || seen_->error == EPERM; }
    int error() const { return seen_->error; }

private:
    struct Seen {
        std::optional<Found> camera;
        int error = 0; // where there is none
    };

    std::shared_ptr<Seen> seen_;
    DriverCall call_;
};

/// By its id first: two cameras may have one name.
class Search {
public:
    Search(std::shared_ptr<VideoSystem const> system, std::string id, DriverCall::Deadline until)
        : system_(std::move(system))
        , id_(std::move(id))
        , until_(until) {}

    /// Without its device.
    std::optional<Found> found() {
        auto nodes = system_->nodes();
        std::erase_if(nodes, [&](VideoNode const& node) { return !id_.empty() && !isNamed(node, id_); });
        auto camera = firstOf(nodes, [](Found const&) { return true; });
        if (!camera && !silent_ && !id_.empty())
            camera = firstOf(system_->nodes(), [&](Found const& it) { return it.description.name == id_; });
        if (!camera && silent_) failSilent(id_.empty() ? *silent_ : id_);
        return camera;
    }

private:
    /// All are looked at at once, so that one which hangs does not take the others' time.
    std::optional<Found> firstOf(std::vector<VideoNode> const& nodes, FunctionRef<bool(Found const&)> isMeant) {
        std::vector<Look> looks;
        for (auto const& node : nodes) looks.emplace_back(system_, node);
        for (std::size_t i = 0; i < looks.size(); ++i) {
            auto& look = looks[i];
            if (!look.returns(until_)) {
                silent_ = nodes[i].id;
            } else if (look.camera() && isMeant(*look.camera())) {
                return std::move(look.camera());
            } else if (look.isBarred() && isNamed(nodes[i], id_)) {
                fail(fmt::format("The camera “{}” cannot be used: {}.", id_, systemReason(look.error())));
            }
        }
        return std::nullopt;
    }

    std::shared_ptr<VideoSystem const> const system_;
    std::string const id_;
    DriverCall::Deadline const until_;
    std::optional<std::string> silent_; // id of a node whose driver does not answer
};

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

/// What a camera that is opened once comes to.
struct Trial {
    ReopenedCamera::Options options;
    std::exception_ptr failure;
};

}

VideoCameraList cameras(std::shared_ptr<VideoSystem const> const& system, std::chrono::milliseconds patience) {
    auto const until = std::chrono::steady_clock::now() + patience;
    auto const nodes = system->nodes();
    std::vector<Look> looks;
    for (auto const& node : nodes) looks.emplace_back(system, node);
    VideoCameraList result;
    for (std::size_t i = 0; i < looks.size(); ++i) {
        bool const answers = looks[i].returns(until);
        if (!answers) result.silent.push_back(nodes[i].id);
        if (answers && looks[i].camera())
            result.cameras.push_back({nodes[i].id, looks[i].camera()->description.name, result.cameras.empty()});
    }
    return result;
}

namespace {

/// Opens it and closes it again.
void tryOut(VideoSystem const& system, Identity const& identity, CameraMode const& mode, Trial& trial) {
    try {
        auto const stream = reopened(system, identity, mode);
        if (!stream) fail(fmt::format("The camera “{}” is gone.", identity.name));
        trial.options.size = ReopenedCamera::filmedSize(stream->format());
        trial.options.fps = std::clamp(static_cast<int>(std::lround(stream->fps())), 1, 120);
    } catch (CaptureError const&) {
        trial.failure = std::current_exception();
    }
}

}

std::unique_ptr<CameraSource> openCamera(std::shared_ptr<VideoSystem const> const& system,
                                         CameraDeviceSource const& source, std::chrono::milliseconds patience) {
    auto const until = std::chrono::steady_clock::now() + patience;
    auto const camera = Search(system, source.id, until).found();
    if (!camera) return nullptr;
    auto const mode = *chosenMode(camera->modes);
    Identity const identity{camera->node.id, camera->description.name, camera->description.bus};
    auto const trial = std::make_shared<Trial>();
    DriverCall call(*system, camera->node, [=] { tryOut(*system, identity, mode, *trial); });
    if (!call.returns(until)) failSilent(identity.name);
    if (trial->failure) std::rethrow_exception(trial->failure);
    auto options = trial->options;
    options.open = [=] { return reopened(*system, identity, mode); };
    options.id = identity.id;
    if (auto const lag = source.lags.find(identity.id); lag != source.lags.end()) options.lag = lag->second;
    return std::make_unique<ReopenedCamera>(std::move(options));
}

}
