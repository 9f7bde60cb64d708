#pragma once

#include <Tavaro/Model/Jobs/JobControl.h>

#include <TavaroPlatform/Queues/MainQueue.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <cassert>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tavaro {

/// Of work that cannot tell how far it is.
struct NoProgress {};

/// Whether both are of the same stage of the work, where it has any.
template<class Progress> bool isSameStage(Progress const& a, Progress const& b) {
    if constexpr (requires { a.stage; })
        return a.stage == b.stage;
    else
        return true;
}

/// The failure of a job's work as an `Error`, whatever was thrown.
std::exception_ptr asError(std::exception_ptr const& failure);

/// Long work beside the main queue. The work runs once, on a thread of its own, and holds no lock of a project; what it
/// reports is delivered on the main queue, in the order reported, and the end last. All failures are `Error`s.
///
///     Job<ExportedFile, ExportProgress> job = exportJob(queue, request);
///     job.onProgress([&](ExportProgress const& progress) { show(progress); });
///     job.onFinished([&] { try { tell(job.result()); } catch (Error const& error) { tell(error.what()); } });
///     job.start();
///
/// Everything here belongs to the main queue's thread, `cancel` to any. A job that goes away is cancelled first, its
/// work waited for, and nothing of it is delivered any more. The main queue outlives its jobs.
template<class Result, class Progress = NoProgress> class Job {
public:
    using Work = std::function<Result(JobReporter<Progress>&)>;

    /// The label names the thread, as of a `SerialQueue`.
    Job(MainQueue& queue, std::string label, Work work)
        : label_(std::move(label))
        , state_(std::make_shared<State>(queue, std::move(work))) {}
    ~Job() {
        if (!state_) return;
        state_->isAbandoned = true;
        state_->cancel();
    }
    Job(Job&&) noexcept = default;
    Job& operator=(Job&&) = delete;

    void onProgress(std::function<void(Progress const&)> const& handler) { state_->onProgress = handler; }
    void onRemark(std::function<void(std::string const&)> const& handler) { state_->onRemark = handler; }
    void onFinished(std::function<void()> const& handler) { state_->onFinished = handler; }

    /// Once.
    void start() {
        assert(state_->queue.isCurrent() && !thread_);
        thread_ = std::make_unique<SerialQueue>(label_);
        thread_->async([state = state_] { state->run(state); });
    }
    /// Asks the work to end early; it then fails, unless it was done already.
    void cancel() { state_->cancel(); }

    /// Whether the end was delivered.
    bool isFinished() const { return state_->isFinished; }
    /// Of a finished job: what it made, or its failure as an exception.
    Result& result() {
        assert(isFinished());
        if (state_->failure) std::rethrow_exception(state_->failure);
        return *state_->result;
    }
    /// Runs the main queue until the job is finished.
    Result& wait() {
        state_->queue.runUntil([&] { return isFinished(); });
        return result();
    }

private:
    struct State : JobReporter<Progress> {
        State(MainQueue& queue, Work work) : queue(queue), work(std::move(work)) {}

        void run(std::shared_ptr<State> const& self) {
            this->self = self;
            try {
                result.emplace(work(*this));
            } catch (...) {
                failure = asError(std::current_exception());
            }
            work = nullptr; // with all it holds, on the thread that used it
            queue.async([self] { self->finish(); });
            this->self.reset();
        }
        void progress(Progress const& progress) override {
            std::lock_guard const lock(mutex);
            if (!waiting.empty() && isSameStage(waiting.back(), progress)) {
                waiting.back() = progress;
                return;
            }
            waiting.push_back(progress);
            if (waiting.size() == 1) queue.async([self = self] { self->deliverProgress(); });
        }
        void remark(std::string sentence) override {
            queue.async([self = self, sentence = std::move(sentence)] {
                if (!self->isAbandoned && self->onRemark) self->onRemark(sentence);
            });
        }
        void deliverProgress() {
            std::vector<Progress> reports;
            {
                std::lock_guard const lock(mutex);
                std::swap(reports, waiting);
            }
            for (auto const& report : reports)
                if (!isAbandoned && onProgress) onProgress(report);
        }
        void finish() {
            if (isAbandoned) return;
            isFinished = true;
            if (onFinished) onFinished();
        }

        MainQueue& queue;
        Work work;                    // the job's thread
        std::shared_ptr<State> self;  // the job's thread, while the work runs
        std::optional<Result> result; // the job's thread until the end is delivered
        std::exception_ptr failure;   // likewise
        std::mutex mutex;
        std::vector<Progress> waiting; // to be delivered, the newest of each stage; guarded by `mutex`
        std::function<void(Progress const&)> onProgress;
        std::function<void(std::string const&)> onRemark;
        std::function<void()> onFinished;
        bool isFinished = false;
        bool isAbandoned = false;
    };

    std::string label_;
    std::shared_ptr<State> state_;
    std::unique_ptr<SerialQueue> thread_; // goes first, and waits for the work
};

}
