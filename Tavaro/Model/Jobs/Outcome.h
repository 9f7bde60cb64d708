#pragma once

#include <Tavaro/Model/Jobs/Job.h>

#include <exception>
#include <optional>
#include <utility>

namespace tavaro {

/// What came of work whose end somebody is told of: what it made, or the failure that its work threw.
template<class Result> class Outcome {
public:
    Outcome(Result made) : made_(std::move(made)) {}
    Outcome(std::exception_ptr failure) : failure_(std::move(failure)) {}

    /// Of whatever `work` returns or throws.
    template<class Work> static Outcome of(Work work) {
        try {
            return work();
        } catch (...) {
            return asError(std::current_exception());
        }
    }

    /// Null when there is something made.
    std::exception_ptr const& failure() const { return failure_; }
    /// What it made, or its failure as an exception.
    Result const& value() const {
        if (failure_) std::rethrow_exception(failure_);
        return *made_;
    }

private:
    std::optional<Result> made_;
    std::exception_ptr failure_;
};

}
