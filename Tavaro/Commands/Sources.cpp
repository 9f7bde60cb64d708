#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Model/Listings/SourceListing.h>

#include <TavaroCapture/Devices/ListSources.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCore/Records/JSON.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace tavaro::commands {

namespace {

/// None before the user has chosen what is shared.
std::string place(ListedFrame const& frame) {
    if (frame.width == 0) return "shared when asked";
    return fmt::format("{}×{} at {},{}", frame.width, frame.height, frame.x, frame.y);
}

void print(SourceListing const& list) {
    for (auto const& display : list.displays) {
        terminal::say("{:<16} {:<24} {}{}\n", display.id, place(display.frame), display.name,
                      display.isMain ? " (main)" : "");
    }
    for (auto const& window : list.windows) {
        terminal::say("{:<16} {:<24} {}: {}{}\n", window.id, place(window.frame), window.application, window.title,
                      window.isMinimized ? " (minimised)" : "");
    }
    for (auto const& camera : list.cameras)
        terminal::say("{:<16} {:<24} {}{}\n", camera.id, "camera", camera.name, camera.isDefault ? " (default)" : "");
    for (auto const& microphone : list.microphones)
        terminal::say("{:<16} {:<24} {}{}\n", microphone.id, "microphone", microphone.name,
                      microphone.isDefault ? " (default)" : "");
    if (list.systemAudio) terminal::say("{:<16} {:<24} {}\n", "system audio", "what is played", list.systemAudio->name);
    if (list.systemAudio)
        for (auto const& application : list.systemAudio->applications)
            terminal::say("{:<16} {:<24} {}\n", "system audio", "what one plays", application);
    if (list.cameras.empty()) terminal::tell("There is no camera.\n");
    // Without a sound server, the limits say so.
    if (list.microphones.empty() && list.systemAudio) terminal::tell("There is no microphone.\n");
    for (auto const& limit : list.limits) terminal::tell("{}\n", limit);
}

void show(SourceListing const& list, bool asJSON) {
    if (asJSON)
        terminal::sayJSON(encodeJSON(list));
    else
        print(list);
}

/// Without a display there is nothing to record, but what else there is may be what somebody wants to know.
void listAll(bool asJSON) {
    try {
        show(listingOf(listSources()), asJSON);
    } catch (CaptureError const& error) {
        if (error.kind == CaptureError::Kind::noDisplay) show(listingOf(listDevices()), asJSON);
        throw;
    }
}

}

void addSources(CLI::App& app) {
    auto asJSON = std::make_shared<bool>(false);
    auto* command = app.add_subcommand(
        "sources", "Lists the displays, windows, cameras, microphones and other sound that can be recorded");
    command->add_flag("--json", *asJSON, "print them as JSON");
    command->callback([asJSON] { listAll(*asJSON); });
}

}
