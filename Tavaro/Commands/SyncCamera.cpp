#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Model/Recording/RecordingPreferences.h>

#include <TavaroCapture/CameraSync/CameraSync.h>
#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/JSON.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <cmath>
#include <memory>

namespace tavaro::commands {

namespace {

struct Options {
    CameraSyncOptions sync;
    bool asJSON = false;
};

struct SyncReport {
    std::string camera;
    double lag = 0;
    double spread = 0;
    std::int64_t claps = 0;

    static constexpr auto fields = std::tuple{
        field("camera", &SyncReport::camera),
        field("lag", &SyncReport::lag),
        field("spread", &SyncReport::spread),
        field("claps", &SyncReport::claps),
    };
};
static_assert(listsEveryField<SyncReport>);

CameraSync watched(Options const& options) {
    Interruption const interruption;
    terminal::tell("Clap in view of the camera, about once a second, for {:g} seconds. Ctrl-C ends it sooner.\n",
                   options.sync.seconds);
    return measuredCameraSync(options.sync, [&] { return interruption.isRequested(); });
}

void syncCamera(Options const& options) {
    auto const sync = watched(options);
    Preferences preferences;
    keepCameraLag(preferences, sync.camera, sync.lag);
    if (options.asJSON)
        return terminal::sayJSON(encodeJSON(SyncReport{sync.camera, sync.lag, sync.spread, sync.claps}));
    terminal::say(
        "{}: its pictures come {:.3f} s {} the sound ({} claps, ±{:.3f} s). Recordings make up for it from now "
        "on.\n",
        sync.camera, std::abs(sync.lag), sync.lag < 0 ? "before" : "after", sync.claps, sync.spread);
}

}

void addSyncCamera(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("sync-camera", "Finds by how much a camera is behind the sound, from claps");
    command->add_option("--camera", options->sync.camera.id, "a camera, by its id in `tavaro sources`");
    command->add_option("--microphone", options->sync.microphone.id, "a microphone, by its id in `tavaro sources`");
    command->add_option("--seconds", options->sync.seconds, "how long to watch")
        ->check(secondsFrom(4, 60))
        ->capture_default_str();
    command->add_flag("--json", options->asJSON, "print what was found as JSON");
    command->callback([options] { syncCamera(*options); });
}

}
