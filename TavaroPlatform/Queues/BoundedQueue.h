#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace tavaro {

/// Hands values from one thread to another, a few at most under way: the faster side sleeps.
template<class T> class BoundedQueue {
public:
    explicit BoundedQueue(std::size_t capacity) : capacity_(capacity) {}

    /// Waits for room. False when the queue was closed meanwhile; the value is dropped then.
    bool push(T value) {
        std::unique_lock lock(mutex_);
        hasRoom_.wait(lock, [&] { return isClosed_ || values_.size() < capacity_; });
        if (isClosed_) return false;
        values_.push_back(std::move(value));
        hasValue_.notify_one();
        return true;
    }

    /// Waits for a value. None once the queue is closed and empty.
    std::optional<T> pop() {
        std::unique_lock lock(mutex_);
        hasValue_.wait(lock, [&] { return isClosed_ || !values_.empty(); });
        if (values_.empty()) return std::nullopt;
        std::optional<T> value(std::move(values_.front()));
        values_.pop_front();
        hasRoom_.notify_one();
        return value;
    }

    /// No more values come; those in the queue are still handed out.
    void close() {
        std::lock_guard const lock(mutex_);
        isClosed_ = true;
        hasRoom_.notify_all();
        hasValue_.notify_all();
    }

    /// Closes and drops what is in the queue.
    void abandon() {
        std::deque<T> dropped; // outlives the lock: dropping a picture may take a while
        std::lock_guard const lock(mutex_);
        isClosed_ = true;
        dropped.swap(values_);
        hasRoom_.notify_all();
        hasValue_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable hasRoom_;
    std::condition_variable hasValue_;
    std::deque<T> values_;
    std::size_t const capacity_;
    bool isClosed_ = false;
};

}
