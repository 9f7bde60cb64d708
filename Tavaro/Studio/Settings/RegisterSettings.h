#pragma once

namespace tavaro {

class AgentSettings;
class ConsentQuestions;
class UpdateCheck;

/// Lets QML see them, which outlive it, as `Agents`, `Consent` and `Updates` of "Tavaro.Settings".
void registerSettings(AgentSettings& agents, ConsentQuestions& consent, UpdateCheck& updates);

}
