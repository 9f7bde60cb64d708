#include <TavaroCapture/Segments/Private/StreamSegments.h>

namespace tavaro {

void failWriting(std::string detail) {
    if (detail.ends_with('.')) detail.pop_back();
    throw CaptureError(CaptureError::Kind::writeFailed, "Could not write the recording: " + detail + ".");
}

StreamSegments::StreamSegments(std::shared_ptr<TakeManifest> manifest, StreamRole role)
    : manifest_(std::move(manifest))
    , role_(role) {}

StreamSegments::~StreamSegments() { manifest_->wait(); }

std::filesystem::path StreamSegments::openPath(std::int64_t later) const {
    return manifest_->segmentPath(role_, static_cast<std::int64_t>(closed_.size()) + later);
}

void StreamSegments::close(double start, double duration, std::function<void()> finishFile) {
    auto const index = static_cast<std::int64_t>(closed_.size());
    closed_.push_back({index, segmentFileName(index, role_), start, duration});
    manifest_->add(role_, closed_.back());
    inBackground([this, finishFile = std::move(finishFile)] {
        finishFile();
        manifest_->writeIfDue();
    });
}

void StreamSegments::inBackground(std::function<void()> step) {
    manifest_->inBackground([this, step = std::move(step)] {
        try {
            writing(step);
        } catch (...) {
            std::lock_guard const guard(failureLock_);
            if (!failure_) failure_ = std::current_exception();
        }
    });
}

void StreamSegments::rethrowFailure() {
    std::lock_guard const guard(failureLock_);
    if (failure_) std::rethrow_exception(failure_);
}

void StreamSegments::wait() {
    manifest_->wait();
    rethrowFailure();
}

}
