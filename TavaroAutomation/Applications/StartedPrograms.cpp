#include <TavaroAutomation/Applications/Private/StartedPrograms.h>

#include <TavaroPlatform/Clocks/MediaClock.h>

namespace tavaro {

void StartedPrograms::add(DetachedProcess program) {
    constexpr double seconds = 1;
    if (!thread_) thread_ = std::make_unique<SerialQueue>("com.tavaro.automation.programs");
    thread_->async([this, program] {
        if (running_.empty()) thread_->startTimer(mediaClockNow(), seconds, [this](double) { forgetEnded(); });
        running_.push_back(program);
    });
}

void StartedPrograms::forgetEnded() {
    std::erase_if(running_, [](DetachedProcess& program) { return program.hasEnded(); });
    if (running_.empty()) thread_->stopTimer();
}

}
