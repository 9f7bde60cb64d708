#include <TavaroMCP/Client/ScriptPlayer.h>

#include <TavaroCore/Records/Data.h>

#include <fmt/format.h>

#include <chrono>
#include <thread>
#include <utility>

namespace tavaro {

namespace {

using Clock = std::chrono::steady_clock;

class StepFailed : public Error {
public:
    using Error::Error;
};

double secondsSince(Clock::time_point begun) { return std::chrono::duration<double>(Clock::now() - begun).count(); }

/// The last text of the result, or of its picture.
std::string textOf(JSONValue const& result) {
    auto const* const content = result.find<JSONValue::Array>("content");
    auto const* const text = content && !content->empty() ? content->back().find<std::string>("text") : nullptr;
    return text ? *text : "";
}

bool isFailure(JSONValue const& result) {
    auto const* const isError = result.find<bool>("isError");
    return isError && *isError;
}

std::optional<Data> pictureOf(JSONValue const& result) {
    auto const* const content = result.find<JSONValue::Array>("content");
    auto const* const bytes = content && !content->empty() ? content->front().find<std::string>("data") : nullptr;
    return bytes ? Data::fromBase64(*bytes) : std::nullopt;
}

}

std::vector<PlayedStep> ScriptPlayer::play(ToolScript const& script) {
    std::vector<PlayedStep> played;
    try {
        for (std::size_t i = 0; i < script.steps.size(); ++i) played.push_back(play(script, i));
    } catch (Error const& error) {
        throw Error(fmt::format("{}: {}{}", script.titleOf(played.size()), error.what(), endRecording()));
    }
    if (auto const ended = endRecording(); !ended.empty())
        throw Error("The script ended without stop_recording." + ended);
    return played;
}

PlayedStep ScriptPlayer::play(ToolScript const& script, std::size_t index) {
    auto const& step = script.steps[index];
    PlayedStep played{.tool = step.name()};
    auto const begun = Clock::now();
    if (watch_.begins) watch_.begins(index);
    if (step.tool) {
        auto const result = call(script, index);
        played.text = textOf(result);
        if (auto const* const structured = result.find("structuredContent")) played.result = *structured;
        if (!step.as.empty()) results_.insert_or_assign(step.as, played.result.value_or(JSONValue()));
        if (!step.save.empty()) savePicture(step.save, result);
    } else {
        pause(step.pause);
    }
    played.seconds = secondsSince(begun);
    if (watch_.ends) watch_.ends(played);
    return played;
}

JSONValue ScriptPlayer::call(ToolScript const& script, std::size_t index) {
    auto const tool = *script.steps[index].tool;
    auto arguments = script.arguments(index, results_);
    MCPClient::Watch const watch{.progress = watch_.progress, .isCancelled = watch_.isCancelled};
    if (!client_) client_ = std::make_unique<MCPClient>(settings_, watch);
    if (tool == MCPToolName::startRecording) mayRecord_ = true; // also while the call is under way
    maySave_ = tool == MCPToolName::recordFor;
    auto result = client_->call(tavaro::nameOf(tool), std::move(arguments), watch);
    maySave_ = false;
    bool const isDone = !isFailure(result);
    noteRecording(tool, isDone);
    if (!isDone) throw StepFailed(textOf(result));
    return result;
}

void ScriptPlayer::noteRecording(MCPToolName tool, bool isDone) {
    if (tool == MCPToolName::startRecording) mayRecord_ = isDone;
    bool const ends = tool == MCPToolName::stopRecording || tool == MCPToolName::cancelRecording;
    if (ends && isDone) mayRecord_ = false;
}

void ScriptPlayer::pause(double seconds) const {
    constexpr double glance = 0.05;
    auto const begun = Clock::now();
    for (double left = seconds; left > 0; left = seconds - secondsSince(begun)) {
        if (watch_.isCancelled && watch_.isCancelled()) throw StepFailed("The pause was cancelled.");
        std::this_thread::sleep_for(std::chrono::duration<double>(std::min(left, glance)));
    }
}

void ScriptPlayer::savePicture(std::string const& file, JSONValue const& result) const {
    auto const picture = pictureOf(result);
    if (!picture) throw StepFailed("The result has no picture that could be saved.");
    PendingFile pending(file);
    pending.append({reinterpret_cast<char const*>(picture->bytes.data()), picture->bytes.size()});
    pending.commit(pictures_);
}

/// What became of a recording that was running, as a sentence with a blank before; empty where none was.
std::string ScriptPlayer::endRecording() {
    client_.reset();
    if (maySave_) return saveRecording();
    return mayRecord_ && cancelRecording() ? " The recording was thrown away." : "";
}

std::string ScriptPlayer::saveRecording() const {
    auto const saved = callAfterwards(MCPToolName::stopRecording);
    auto const* const made = saved ? saved->find("structuredContent") : nullptr;
    auto const* const path = made ? made->find<std::string>("path") : nullptr;
    return path ? fmt::format(" What was recorded is kept in “{}”.", *path) : "";
}

bool ScriptPlayer::cancelRecording() const { return callAfterwards(MCPToolName::cancelRecording).has_value(); }

/// By a conversation of its own, since the one before may be at its end or in the middle of a call. None where it
/// failed.
std::optional<JSONValue> ScriptPlayer::callAfterwards(MCPToolName tool) const {
    constexpr std::chrono::seconds patience(20);
    auto const deadline = Clock::now() + patience;
    MCPClient::Watch const watch{.isCancelled = [&] { return Clock::now() > deadline; }};
    try {
        auto result = MCPClient(settings_, watch).call(tavaro::nameOf(tool), {}, watch);
        return isFailure(result) ? std::nullopt : std::optional(std::move(result));
    } catch (Error const&) {
        return std::nullopt;
    }
}

}
