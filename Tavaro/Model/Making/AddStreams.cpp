#include <Tavaro/Model/Making/AddStreams.h>

namespace tavaro {

void addStreams(NewProject& project, std::vector<TakeStream> const& streams) {
    for (auto const& stream : streams) {
        SideRecording const recording{stream.file, stream.offset, stream.duration};
        switch (stream.role) {
        case StreamRole::screen: break; // the project's movie
        case StreamRole::camera: project.camera = recording; break;
        case StreamRole::microphone: project.sounds.push_back({AudioRole::microphone, recording}); break;
        case StreamRole::systemSound: project.sounds.push_back({AudioRole::system, recording}); break;
        }
    }
}

}
