#include <TavaroVision/Scanning/PrivacyScan.h>

#include <TavaroMedia/Frames/BrightnessReader.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroVision/Errors/VisionError.h>
#include <TavaroVision/Reading/Private/LineImage.h>
#include <TavaroVision/Reading/Private/TextReader.h>
#include <TavaroVision/Scanning/Private/FindingJoins.h>
#include <TavaroVision/Scanning/Private/FoundTexts.h>
#include <TavaroVision/Scanning/Private/ScreenClassifier.h>
#include <TavaroVision/Scanning/Private/StretchScanner.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace tavaro {

namespace {

constexpr double step = 1.0 / 240; // seconds: no frame is shorter
constexpr double unsure = 1;       // seconds before a stop that are read better from what comes after them

using Clock = std::chrono::steady_clock;

/// Tells how far the scan is, ten times a second.
class Progress {
public:
    Progress(std::function<void(ScanProgress const&)> const& told, double total) : told_(told), total_(total) {}

    void tell(double seconds, std::size_t found) {
        constexpr std::chrono::milliseconds between{100};
        auto const now = Clock::now();
        if (!told_ || now - last_ < between) return;
        last_ = now;
        told_({std::min(seconds, total_), total_, found});
    }
    void tellEnd(double seconds, std::size_t found) {
        if (told_) told_({std::min(seconds, total_), total_, found});
    }

private:
    std::function<void(ScanProgress const&)> const& told_;
    double total_;
    Clock::time_point last_{};
};

/// What of the movie is looked at.
std::vector<TimeRange> rangesOf(ScanRequest const& request, double duration) {
    if (request.ranges.empty()) return {{0, duration}};
    std::vector<TimeRange> ranges;
    for (auto const& range : request.ranges) {
        auto const start = std::max(0.0, range.start), end = std::min(duration, range.end());
        if (start < end) ranges.push_back({start, end - start});
    }
    return ranges;
}

double lengthOf(std::vector<TimeRange> const& ranges) {
    double length = 0;
    for (auto const& range : ranges) length += range.duration;
    return length;
}

/// Until when a range that is stopped counts as looked at. Of a short look it is half, so that one who stops often gets
/// on all the same.
double keptUntil(TimeRange const& range, double reached, std::optional<double> unreadSince) {
    auto const kept = reached - std::min(unsure, (reached - range.start) / 2);
    return std::max(range.start, std::min(kept, unreadSince.value_or(kept)));
}

std::string leftOutSentence(std::size_t lines) {
    return lines == 1 ? "A line of text could not be read, and may be private."
                      : std::to_string(lines) + " lines of text could not be read, and may be private.";
}

class MovieScan {
public:
    MovieScan(ScanRequest const& request, std::function<void(ScanProgress const&)> const& told,
              std::stop_token const& stop)
        : request_(request)
        , stop_(stop)
        , movie_(request.movie)
        , ranges_(rangesOf(request, movie_.info().duration))
        , progress_(told, lengthOf(ranges_))
        , classifier_(request.settings) {}

    ScanOutcome run() {
        for (auto const& range : ranges_) {
            if (stop_.stop_requested() || outcome_.failure) break;
            scan(range);
        }
        outcome_.isStopped = stop_.stop_requested() || outcome_.failure;
        outcome_.findings = joinedFindings(std::move(outcome_.findings));
        outcome_.warnings = classifier_.warnings();
        if (auto const lines = text_.leftOut(); lines > 0) outcome_.warnings.push_back(leftOutSentence(lines));
        progress_.tellEnd(seconds_, outcome_.findings.size());
        return std::move(outcome_);
    }

private:
    void scan(TimeRange const& range) {
        StretchScanner scanner({classifier_, reader_, memory_, found_, request_.key, request_.interval});
        double reached = range.start;
        bool isWhole = false;
        std::vector<ScreenFinding> findings;
        try {
            isWhole = showAll(scanner, range, reached);
            findings = isWhole ? scanner.finish(range.end()) : scanner.stop(reached);
        } catch (VisionError const& error) {
            isWhole = false;
            bool const isAny = seconds_ > 0 || keptUntil(range, reached, scanner.unreadSince()) > range.start;
            if (error.kind != VisionError::Kind::cancelled) giveUp(error, isAny);
            findings = scanner.stop(reached);
        }
        auto const end = isWhole ? range.end() : keptUntil(range, reached, scanner.unreadSince());
        seconds_ += end - range.start;
        if (end > range.start) outcome_.ranges.push_back({range.start, end - range.start});
        std::ranges::move(findings, std::back_inserter(outcome_.findings));
    }

    /// Of somebody who catches it, unless there is nothing to be kept.
    void giveUp(VisionError const& error, bool isAnyKept) {
        if (!isAnyKept) throw;
        outcome_.failure = error.what();
    }

    /// False where it is stopped; `reached` is what was read to its end.
    bool showAll(StretchScanner& scanner, TimeRange const& range, double& reached) {
        std::uint64_t last = 0;
        bool isFirst = true;
        for (std::int64_t tick = 0;; ++tick) {
            auto const at = range.start + static_cast<double>(tick) * step;
            if (at >= range.end()) return true;
            if (stop_.stop_requested()) return false;
            auto const frame = movie_.frame(at);
            if (!isFirst && frame.identity() == last) continue;
            last = frame.identity();
            isFirst = false;
            auto const time = std::max(frame.presentationTime(), range.start);
            show(scanner, frame, time);
            reached = time;
            progress_.tell(seconds_ + time - range.start, outcome_.findings.size() + scanner.found());
        }
    }

    void show(StretchScanner& scanner, VideoFrame const& frame, double time) {
        auto const view = brightness_.view(frame);
        scanner.show({view.pixels, view.width, view.height, view.stride}, time);
    }

    std::vector<ReadLine> read(GrayView const& picture, std::span<TextLine const> lines) {
        std::vector<LineImage> images;
        images.reserve(lines.size());
        for (auto const& line : lines) images.push_back(lineImage(picture, line));
        return text_.read(images, stop_);
    }

    ScanRequest const& request_;
    std::stop_token stop_;
    MovieReader movie_;
    BrightnessReader brightness_;
    TextReader text_;
    std::vector<TimeRange> ranges_;
    Progress progress_;
    ScreenClassifier classifier_;
    ReadMemory memory_;
    FoundTexts found_;
    LineReading reader_ = [this](GrayView const& picture, std::span<TextLine const> lines) {
        return read(picture, lines);
    };
    ScanOutcome outcome_;
    double seconds_ = 0; // looked at before the present range
};

}

ScanOutcome scanMovie(ScanRequest const& request, std::function<void(ScanProgress const&)> const& told,
                      std::stop_token const& stop) {
    return MovieScan(request, told, stop).run();
}

}
