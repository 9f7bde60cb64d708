#pragma once

#include <TavaroCore/Errors/Error.h>

#include <functional>
#include <mutex>
#include <string>

namespace tavaro {

/// The failure of a job that was cancelled, where its work has none of its own for that.
class JobCancelled : public Error {
public:
    using Error::Error;
};

/// What the work of a job sees of those who started it. Outlives the work.
class JobControl {
public:
    JobControl() = default;
    virtual ~JobControl();
    JobControl(JobControl const&) = delete;
    JobControl& operator=(JobControl const&) = delete;

    bool isCancelled() const;
    /// Throws `JobCancelled` with that sentence when the job was cancelled.
    void stopIfCancelled(std::string const& sentence) const;

    /// A way to end work that does not ask: `stop` runs when the job is cancelled, on the thread that does so, or at
    /// once when it was already; never after this object is gone. It must be brief.
    class [[nodiscard]] CancelAction {
    public:
        CancelAction(JobControl& control, std::function<void()> stop);
        ~CancelAction();
        CancelAction(CancelAction const&) = delete;
        CancelAction& operator=(CancelAction const&) = delete;

    private:
        JobControl& control_;
    };

    /// Says in a sentence what the user should know beside the result.
    virtual void remark(std::string sentence) = 0;

    /// Any thread.
    void cancel();

private:
    mutable std::mutex mutex_;
    bool isCancelled_ = false;
    std::function<void()> stop_;
};

/// The same for work that tells how far it is.
template<class Progress> class JobReporter : public JobControl {
public:
    /// The newest counts: what is not delivered when the next of the same stage comes is left out. So the last report
    /// of each stage is always delivered.
    virtual void progress(Progress const& progress) = 0;
};

}
