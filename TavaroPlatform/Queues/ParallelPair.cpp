#include <TavaroPlatform/Queues/ParallelPair.h>

#include <future>
#include <system_error>
#include <thread>

namespace tavaro {

void runInParallel(FunctionRef<void()> first, FunctionRef<void()> second) {
    std::future<void> other;
    if (std::thread::hardware_concurrency() > 1) {
        try {
            other = std::async(std::launch::async, second);
        } catch (std::system_error const&) {
            // no thread to be had
        }
    }
    first(); // the future waits for the other when this throws
    if (other.valid())
        other.get();
    else
        second();
}

}
