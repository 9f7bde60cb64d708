#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <string>

namespace tavaro {

/// Finds out which of several encoders work by trying them. What a try showed is remembered. Any thread.
class EncoderTrials {
public:
    /// Tries one by its name; false or an exception: it does not work. May outlive the question, and the trials: one
    /// that takes too long is left running by itself, so it owns all that it uses.
    using Trial = std::function<bool(std::string const& name)>;

    /// Drivers that hang, or take that long to wake, are passed over.
    explicit EncoderTrials(std::chrono::milliseconds patience = std::chrono::seconds(5)) : patience_(patience) {}

    /// The first of `names` whose trial succeeds; the same question (`purpose`: codec, size, rate) tries none again.
    std::optional<std::string> firstThatWorks(std::span<std::string const> names, std::string const& purpose,
                                              Trial const& trial);

private:
    bool works(std::string const& name, Trial const& trial) const;

    std::chrono::milliseconds const patience_;
    std::mutex mutex_;
    std::map<std::pair<std::string, std::string>, bool> known_;
};

}
