#include <TavaroVoice/SystemVoices/Private/EngineFailure.h>

#include <TavaroCore/Errors/Excerpt.h>

#include <fmt/format.h>

namespace tavaro {

namespace {

using End = ProgramAnswer::End;

std::string reasonOf(ProgramAnswer const& answer, std::string const& engine) {
    switch (answer.end) {
    case End::notStarted: return engine + " cannot be started";
    case End::outOfTime: return engine + " did not finish in time";
    case End::tooMuch: return engine + " made more sound than a line can have";
    case End::broken: return fmt::format("{} was ended by signal {}", engine, answer.exitCode - 128);
    default: break;
    }
    auto const said = excerpt(answer.error, 200);
    return said.empty() ? fmt::format("{} ended with code {}", engine, answer.exitCode)
                        : fmt::format("{} says “{}”", engine, said);
}

}

VoiceError engineFailure(std::string const& engine, std::string const& reason) {
    return {VoiceError::Kind::failed, fmt::format("The voice of {} failed: {}.", engine, reason)};
}

void expectGood(ProgramAnswer const& answer, std::string const& engine) {
    if (answer.end == End::cancelled) throw cancelledSpeech();
    if (!answer.isGood()) throw engineFailure(engine, reasonOf(answer, engine));
}

}
