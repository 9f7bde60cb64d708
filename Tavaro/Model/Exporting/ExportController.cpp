#include <Tavaro/Model/Exporting/ExportController.h>

#include <algorithm>
#include <utility>

namespace tavaro {

namespace {

/// Drawing takes nearly all the time; the sound is enhanced before, where it is not kept from earlier.
double shareOf(ExportProgress const& progress) {
    constexpr double enhancing = 0.1, drawing = 0.88;
    auto const drawn = static_cast<double>(progress.framesWritten) /
                       static_cast<double>(std::max<std::int64_t>(progress.totalFrames, 1));
    switch (progress.stage) {
    case ExportStage::preparing: return 0;
    case ExportStage::enhancing: return enhancing * progress.enhanced;
    case ExportStage::rendering: return enhancing + drawing * std::min(drawn, 1.0);
    case ExportStage::finishing: return enhancing + drawing;
    }
    return 0;
}

}

void ExportController::start(ExportRequest request, ExportHandlers handlers) {
    if (job_) throw ExportError::alreadyExporting();
    requireUsable(request.choices);
    running_ = RunningExport{.package = request.package.url()};
    over_ = std::move(handlers.over);
    job_ = std::make_unique<Job<ExportedFilm, ExportProgress>>(exportJob(queue_, std::move(request)));
    job_->onProgress([this](ExportProgress const& progress) { follow(progress); });
    job_->onRemark(handlers.remark);
    job_->onFinished([this] { finish(); });
    job_->start();
    observers_.notify(running_);
}

void ExportController::cancel() {
    if (job_) job_->cancel();
}

void ExportController::follow(ExportProgress const& progress) {
    running_->progress = progress;
    running_->share = std::max(running_->share, shareOf(progress));
    observers_.notify(running_);
}

void ExportController::finish() {
    auto const job = std::move(job_); // its handler is running
    auto const over = std::exchange(over_, nullptr);
    auto const outcome = ExportOutcome::of([&] { return job->result(); });
    running_.reset();
    observers_.notify(running_);
    if (over) over(outcome);
}

}
