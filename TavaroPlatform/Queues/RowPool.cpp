#include <TavaroPlatform/Queues/RowPool.h>

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include <TavaroPlatform/Queues/Private/ThreadName.h>

namespace tavaro {

namespace {

// More bands than threads, so that a thread the system held up does not hold up the frame.
constexpr int bandsPerThread = 2;
constexpr int smallestBand = 16; // rows

}

struct RowPool::State {
    std::mutex mutex;
    std::condition_variable started;
    std::condition_variable finished;
    bool stops = false;
    // The job under way, guarded by `mutex`.
    Band const* band = nullptr;
    int rowCount = 0;
    int rowsPerBand = 0;
    int nextRow = 0;
    int bandsUnderWay = 0;
    std::exception_ptr failure;
    std::vector<std::thread> threads; // last: they use all of the above

    bool hasBand() const { return band && nextRow < rowCount; }

    /// Draws bands until none is left. The lock is held on entry and exit, and given up while drawing.
    void draw(std::unique_lock<std::mutex>& lock) {
        while (hasBand()) {
            int const begin = nextRow;
            int const end = std::min(begin + rowsPerBand, rowCount);
            nextRow = end;
            ++bandsUnderWay;
            auto const& draws = *band;
            lock.unlock();
            std::exception_ptr thrown;
            try {
                draws(begin, end);
            } catch (...) {
                thrown = std::current_exception();
            }
            lock.lock();
            --bandsUnderWay;
            if (thrown) {
                failure = thrown;
                nextRow = rowCount;
            }
        }
    }

    void work() {
        nameThisThread("com.tavaro.render.rows");
        std::unique_lock lock(mutex);
        while (true) {
            started.wait(lock, [&] { return stops || hasBand(); });
            if (stops) return;
            draw(lock);
            if (bandsUnderWay == 0) finished.notify_one();
        }
    }
};

RowPool::RowPool(int threads) : state_(std::make_unique<State>()) {
    if (threads <= 0) threads = static_cast<int>(std::max(std::thread::hardware_concurrency(), 1u));
    for (int i = 1; i < threads; ++i) state_->threads.emplace_back([state = state_.get()] { state->work(); });
}

RowPool::~RowPool() {
    {
        std::lock_guard const lock(state_->mutex);
        state_->stops = true;
    }
    state_->started.notify_all();
    for (auto& thread : state_->threads) thread.join();
}

int RowPool::threads() const { return static_cast<int>(state_->threads.size()) + 1; }

void RowPool::run(int rowCount, Band band) {
    if (rowCount <= 0) return;
    auto& state = *state_;
    int const bands = state.threads.empty() ? 1 : threads() * bandsPerThread;
    std::unique_lock lock(state.mutex);
    state.band = &band;
    state.rowCount = rowCount;
    state.rowsPerBand = std::max((rowCount + bands - 1) / bands, smallestBand);
    state.nextRow = 0;
    state.failure = nullptr;
    if (state.rowsPerBand < rowCount) state.started.notify_all();
    state.draw(lock);
    state.finished.wait(lock, [&] { return state.bandsUnderWay == 0; });
    state.band = nullptr;
    if (state.failure) std::rethrow_exception(std::exchange(state.failure, nullptr));
}

}
