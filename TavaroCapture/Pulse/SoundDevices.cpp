#include <TavaroCapture/Pulse/Private/SoundDevices.h>

#include <TavaroCapture/Pulse/Private/PulseServer.h>

#include <set>

namespace tavaro::pulse {

namespace {

std::vector<std::string> applicationsOf(std::vector<Playback> const& playbacks) {
    std::set<std::string> names;
    for (auto const& playback : playbacks) names.insert(playback.application);
    names.erase("");
    return {names.begin(), names.end()};
}

}

SoundDevices soundDevices(std::string const& address) {
    Server server(address);
    auto const info = server.connect(std::chrono::seconds(1)) ? server.info() : std::nullopt;
    if (!info) return {};
    SoundDevices result;
    auto const output = server.monitorOf(info->defaultSink);
    for (auto const& source : server.sources()) {
        if (!source.isMonitor)
            result.microphones.push_back({source.name, source.description, source.name == info->defaultSource});
        else if (source.name == output)
            result.systemSound = SystemSoundInfo{source.description, applicationsOf(server.playbacks())};
    }
    return result;
}

}
