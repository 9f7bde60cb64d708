#include <Tavaro/Model/Jobs/JobControl.h>

namespace tavaro {

JobControl::~JobControl() = default;

bool JobControl::isCancelled() const {
    std::lock_guard const lock(mutex_);
    return isCancelled_;
}

void JobControl::stopIfCancelled(std::string const& sentence) const {
    if (isCancelled()) throw JobCancelled(sentence);
}

void JobControl::cancel() {
    std::lock_guard const lock(mutex_);
    if (isCancelled_) return;
    isCancelled_ = true;
    if (stop_) stop_();
}

JobControl::CancelAction::CancelAction(JobControl& control, std::function<void()> stop) : control_(control) {
    std::lock_guard const lock(control.mutex_);
    if (control.isCancelled_) stop();
    control.stop_ = std::move(stop);
}

JobControl::CancelAction::~CancelAction() {
    std::lock_guard const lock(control_.mutex_);
    control_.stop_ = nullptr;
}

}
