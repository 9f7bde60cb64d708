#include <Tavaro/Studio/Settings/RegisterSettings.h>

#include <Tavaro/Studio/Settings/AgentSettings.h>
#include <Tavaro/Studio/Settings/ConsentQuestions.h>

#include <QtQml>

namespace tavaro {

void registerSettings(AgentSettings& agents, ConsentQuestions& consent) {
    qmlRegisterSingletonInstance("Tavaro.Settings", 1, 0, "Agents", &agents);
    qmlRegisterSingletonInstance("Tavaro.Settings", 1, 0, "Consent", &consent);
}

}
