#pragma once

#include <TavaroCore/Records/JSONValue.h>

#include <filesystem>
#include <optional>
#include <string_view>

namespace tavaro {

/// What a program that answers at once says to an order: the details of its answer. None where nobody listens, where it
/// refuses, and where it is silent for a second, as one is that was stopped.
std::optional<JSONValue::Object> quickCall(std::filesystem::path const& socket, std::string_view order);

}
