#include <Tavaro/Studio/Settings/RegisterSettings.h>

#include <Tavaro/Studio/Settings/AgentSettings.h>
#include <Tavaro/Studio/Settings/ConsentQuestions.h>
#include <Tavaro/Studio/Settings/UpdateCheck.h>

#include <QtQml>

namespace tavaro {

void registerSettings(AgentSettings& agents, ConsentQuestions& consent, UpdateCheck& updates) {
    qmlRegisterSingletonInstance("Tavaro.Settings", 1, 0, "Agents", &agents);
    qmlRegisterSingletonInstance("Tavaro.Settings", 1, 0, "Consent", &consent);
    qmlRegisterSingletonInstance("Tavaro.Settings", 1, 0, "Updates", &updates);
}

}
