#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace tavaro {

/// The answer of a task that may hang, as a driver can: it runs on a thread of its own, labelled as a queue's. None
/// where it fails, or takes longer than `patience`; it is then left running by itself, so it owns all that it uses.
std::optional<bool> attempt(std::string const& label, std::chrono::milliseconds patience, std::function<bool()> task);

}
