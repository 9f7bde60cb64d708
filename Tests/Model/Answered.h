#pragma once

#include <Tavaro/Model/Jobs/Outcome.h>

#include <optional>

namespace tavaro {

/// Runs the main queue until the answer of `ask(answer)` has come, and returns it.
template<class Result, class Ask> Outcome<Result> answered(MainQueue& queue, Ask ask) {
    std::optional<Outcome<Result>> outcome;
    ask([&](Outcome<Result> const& answer) { outcome.emplace(answer); });
    queue.runUntil([&] { return outcome.has_value(); });
    return *outcome;
}

}
