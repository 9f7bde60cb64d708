#pragma once

namespace tavaro {

class AgentSettings;
class ConsentQuestions;

/// Lets QML see both, which outlive it, as `Agents` and `Consent` of "Tavaro.Settings".
void registerSettings(AgentSettings& agents, ConsentQuestions& consent);

}
