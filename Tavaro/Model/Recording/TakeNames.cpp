#include <Tavaro/Model/Recording/TakeNames.h>

#include <fmt/chrono.h>
#include <fmt/format.h>

namespace tavaro {

namespace {

std::string named(char const* what, std::time_t time) {
    return fmt::format("{} {:%Y-%m-%d at %H.%M.%S}", what, fmt::localtime(time));
}

}

std::string recordingName(std::time_t startedAt) { return named("Recording", startedAt); }
std::string recoveredName(std::time_t startedAt) { return named("Recovered", startedAt); }

}
