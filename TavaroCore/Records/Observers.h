#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace tavaro {

/// Who wants to hear of something, each for as long as the observation that it keeps. One thread. Who is called may
/// observe in turn, or end observations.
template<class... News> class Observers {
public:
    using Observer = std::function<void(News...)>;
    using Observation = std::shared_ptr<Observer const>;

    [[nodiscard]] Observation add(Observer observer) {
        auto observation = std::make_shared<Observer const>(std::move(observer));
        std::erase_if(observers_, [](auto const& each) { return each.expired(); });
        observers_.push_back(observation);
        return observation;
    }
    void notify(News... news) const {
        for (auto const& each : std::vector(observers_)) {
            if (auto const observer = each.lock()) (*observer)(news...);
        }
    }

private:
    std::vector<std::weak_ptr<Observer const>> observers_;
};

}
