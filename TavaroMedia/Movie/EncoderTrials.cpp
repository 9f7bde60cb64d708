#include <TavaroMedia/Movie/Private/EncoderTrials.h>

#include <utility>

#include <TavaroPlatform/Queues/Attempt.h>

namespace tavaro {

std::optional<std::string> EncoderTrials::firstThatWorks(std::span<std::string const> names, std::string const& purpose,
                                                         Trial const& trial) {
    std::lock_guard const lock(mutex_);
    for (auto const& name : names) {
        auto [known, isNew] = known_.try_emplace({name, purpose}, false);
        if (isNew) known->second = works(name, trial);
        if (known->second) return name;
    }
    return std::nullopt;
}

bool EncoderTrials::works(std::string const& name, Trial const& trial) const {
    return attempt("com.tavaro.media.trial", patience_, [trial, name] { return trial(name); }).value_or(false);
}

}
