#pragma once

#include <TavaroCore/Files/PendingFile.h>
#include <TavaroCore/Records/Fields.h>
#include <TavaroMCP/Client/MCPClient.h>
#include <TavaroMCP/Client/ToolScript.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// What a step came to.
struct PlayedStep {
    std::string tool; // "wait" for a pause
    std::string text; // what the tool says of itself
    double seconds = 0;
    std::optional<JSONValue> result; // the structured part

    static constexpr auto fields =
        std::tuple{field("tool", &PlayedStep::tool), field("text", &PlayedStep::text),
                   field("seconds", &PlayedStep::seconds), field("result", &PlayedStep::result)};
};
static_assert(listsEveryField<PlayedStep>);

/// Plays a script through a server of tools. A script that cannot go on leaves no recording running behind it.
class ScriptPlayer {
public:
    struct Watch {
        std::function<void(std::size_t step)> begins;
        std::function<void(double fraction, std::string const& message)> progress; // of a call
        std::function<void(PlayedStep const& step)> ends;
        std::function<bool()> isCancelled; // asked about every 50 ms
    };

    ScriptPlayer(MCPClient::Settings settings, Watch watch,
                 PendingFile::IfTaken pictures = PendingFile::IfTaken::refuse)
        : settings_(std::move(settings))
        , watch_(std::move(watch))
        , pictures_(pictures) {}

    /// Throws `Error` for the first step that fails, or when it is cancelled: the sentence says which step it was, and
    /// what became of its recording.
    std::vector<PlayedStep> play(ToolScript const& script);

private:
    PlayedStep play(ToolScript const& script, std::size_t step);
    JSONValue call(ToolScript const& script, std::size_t step);
    void pause(double seconds) const;
    void noteRecording(MCPToolName tool, bool isDone);
    void savePicture(std::string const& file, JSONValue const& result) const;
    std::string endRecording();
    std::string saveRecording() const;
    bool cancelRecording() const;
    std::optional<JSONValue> callAfterwards(MCPToolName tool) const;

    MCPClient::Settings const settings_;
    Watch const watch_;
    PendingFile::IfTaken const pictures_;
    std::unique_ptr<MCPClient> client_;
    ToolScript::Results results_;
    bool mayRecord_ = false; // a recording that the script began may be running
    bool maySave_ = false;   // one of a fixed length may be: the application saves it when its client leaves
};

}
