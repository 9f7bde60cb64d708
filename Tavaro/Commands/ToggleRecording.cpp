#include <Tavaro/Commands/ToggleRecording.h>

#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Control/ControlCaller.h>
#include <Tavaro/Control/ControlServer.h>

#include <TavaroCore/Records/JSON.h>

namespace tavaro::commands {

void toggleRecording(TakeOutput output) {
    auto const answer = tavaro::toggleRecording("tavaro record --toggle", controlSocketPath());
    if (output == TakeOutput::json) return terminal::sayJSON(encodeJSON(JSONValue(answer.details)));
    terminal::tell("{}\n", answer.sentence);
    auto const path = answer.details.find("path");
    if (path != answer.details.end())
        if (auto const* const text = path->second.as<std::string>()) terminal::sayPath(*text);
}

}
