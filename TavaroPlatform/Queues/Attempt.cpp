#include <TavaroPlatform/Queues/Attempt.h>

#include <future>
#include <memory>
#include <thread>
#include <utility>

#include <TavaroPlatform/Queues/Private/ThreadName.h>

namespace tavaro {

std::optional<bool> attempt(std::string const& label, std::chrono::milliseconds patience, std::function<bool()> task) {
    auto answer = std::make_shared<std::promise<std::optional<bool>>>();
    auto result = answer->get_future();
    std::thread([answer, label, task = std::move(task)] {
        nameThisThread(label);
        try {
            answer->set_value(task());
        } catch (...) {
            answer->set_value(std::nullopt);
        }
    }).detach();
    if (result.wait_for(patience) != std::future_status::ready) return std::nullopt;
    return result.get();
}

}
