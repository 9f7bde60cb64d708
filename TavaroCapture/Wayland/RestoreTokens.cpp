#include <TavaroCapture/Wayland/Private/RestoreTokens.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroPlatform/Preferences/Preferences.h>

#include <algorithm>
#include <spdlog/spdlog.h>
#include <string_view>
#include <vector>

namespace tavaro::wayland::restoreTokens {

namespace {

/// "display-1 TOKEN"
Preference<std::vector<std::string>> const answers{"com.tavaro.recorder.sharedScreens"};

bool isOf(std::string_view answer, std::string_view source) {
    return answer.size() > source.size() && answer.starts_with(source) && answer[source.size()] == ' ';
}

}

std::string of(std::string const& source) {
    Preferences preferences;
    for (auto const& answer : preferences.get(answers))
        if (isOf(answer, source)) return answer.substr(source.size() + 1);
    return {};
}

void keep(std::string const& source, std::string const& token) {
    try {
        Preferences preferences;
        preferences.update<std::vector<std::string>>(answers, [&](std::vector<std::string>& all) {
            std::erase_if(all, [&](std::string const& answer) { return isOf(answer, source); });
            if (!token.empty()) all.push_back(source + " " + token);
        });
    } catch (Error const& error) {
        spdlog::warn("The desktop's answer is not kept. {}", error.what());
    }
}

}
