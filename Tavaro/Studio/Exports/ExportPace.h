#pragma once

#include <TavaroRender/Export/Exporter.h>

#include <deque>
#include <optional>

namespace tavaro {

/// How an export under way gets on, from its progress at moments of some clock, in seconds.
class ExportPace {
public:
    explicit ExportPace(double now) : started_(now), changed_(now) {}

    void note(ExportProgress const& progress, double now);

    ExportProgress const& progress() const { return progress_; }
    /// Frames a second over the last moments; none before some were drawn.
    std::optional<double> framesASecond(double now) const;
    std::optional<double> secondsLeft(double now) const;
    /// Seconds without any progress.
    double still(double now) const { return now - changed_; }
    /// Seconds since it was started.
    double elapsed(double now) const { return now - started_; }

private:
    struct Moment {
        double at;
        double frames;
    };

    ExportProgress progress_;
    double started_;
    double changed_; // when it last told of progress
    std::deque<Moment> moments_;
};

}
