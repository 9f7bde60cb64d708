#include <Tavaro/Agents/Private/RunningCall.h>

#include <Tavaro/Model/Exporting/FilmFrame.h>
#include <Tavaro/Model/Operations/OperationError.h>
#include <Tavaro/Model/Recording/RecordingError.h>

#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroMCP/Protocol/ToolResult.h>
#include <TavaroVoice/Errors/VoiceError.h>

#include <exception>

namespace tavaro {

namespace {

MCPErrorCode codeOf(RecordingError const& error) {
    return error.kind == RecordingError::Kind::busy ? MCPErrorCode::busy : MCPErrorCode::notRecording;
}

MCPErrorCode codeOf(OperationError const& error) {
    switch (error.kind) {
    case OperationError::Kind::badPatch: return MCPErrorCode::invalidPatch;
    case OperationError::Kind::notPossible: return MCPErrorCode::failed;
    default: return MCPErrorCode::invalidArguments;
    }
}

MCPErrorCode codeOf(AutomationError const& error) {
    switch (error.kind) {
    case AutomationError::Kind::invalidRequest: return MCPErrorCode::invalidArguments;
    case AutomationError::Kind::noSuchProgram:
    case AutomationError::Kind::noWindow:
    case AutomationError::Kind::noSuchElement: return MCPErrorCode::notFound;
    default: return MCPErrorCode::failed;
    }
}

ToolResult presentFailure(VoiceError const& error) {
    if (error.kind != VoiceError::Kind::noKey) return toolResult::failure(MCPErrorCode::failed, error.what());
    return toolResult::failure(
        MCPErrorCode::needsVoiceKey,
        "That voice needs an ElevenLabs key: Tavaro → Settings → Voiceover. Or use a system voice.");
}

/// What an agent reads of the failure that is being handled.
ToolResult presentFailure() {
    try {
        throw;
    } catch (MCPToolError const& error) {
        return toolResult::failure(error.code, error.what());
    } catch (RecordingError const& error) {
        return toolResult::failure(codeOf(error), error.what());
    } catch (OperationError const& error) {
        return toolResult::failure(codeOf(error), error.what());
    } catch (AutomationError const& error) {
        return toolResult::failure(codeOf(error), error.what());
    } catch (VoiceError const& error) {
        return presentFailure(error);
    } catch (NoSuchFrame const&) {
        return toolResult::failure(MCPErrorCode::invalidArguments, "time must be inside the video.");
    } catch (std::exception const& error) {
        return toolResult::failure(MCPErrorCode::failed, error.what());
    }
}

}

std::string RunningCall::client() const {
    constexpr std::size_t mostBytes = 40;
    return excerpt(call_.client, mostBytes);
}

void RunningCall::finish(ToolResult const& result) {
    if (std::exchange(isOver_, true)) return;
    call_.finish(result);
    over_(*this);
}

void RunningCall::fail() { finish(presentFailure()); }

void RunningCall::whenAbandoned(std::function<void()> act) {
    abandoned_ = std::move(act);
    if (isAbandoned_) abandon();
}

void RunningCall::abandon() {
    isAbandoned_ = true;
    if (auto const act = std::exchange(abandoned_, nullptr); act && !isOver_) attempt(act);
}

}
