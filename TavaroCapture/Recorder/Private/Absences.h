#pragma once

#include <TavaroCapture/Sources/StreamRole.h>

#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

/// When in a take the device of one of its streams was away. Times are seconds of the take. Any thread.
class Absences {
public:
    void begin(double time);
    /// One in which nothing is missing, as of a device that only was late, is none.
    void end(double time);
    bool isAway() const;

    /// When they began, also one that lasts.
    std::vector<double> beginnings() const;
    /// What to tell of them; none when there were none.
    std::optional<std::string> sentence(StreamRole role) const;

private:
    struct Absence {
        double from;
        std::optional<double> to;
    };
    std::mutex mutable lock_;
    std::vector<Absence> absences_; // guarded by lock_
};

}
