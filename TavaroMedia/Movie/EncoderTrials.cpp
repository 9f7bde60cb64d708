#include <TavaroMedia/Movie/Private/EncoderTrials.h>

#include <future>
#include <thread>
#include <utility>

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
    auto answer = std::make_shared<std::promise<bool>>();
    auto result = answer->get_future();
    std::thread([answer, trial, name] {
        try {
            answer->set_value(trial(name));
        } catch (...) {
            answer->set_value(false);
        }
    }).detach();
    return result.wait_for(patience_) == std::future_status::ready && result.get();
}

}
