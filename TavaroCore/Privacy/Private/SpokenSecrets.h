#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

namespace tavaro {

/// Calls `found` with what a plain line says as no other secret is said: "482913 is your code", the words of a wallet
/// behind "seed", codes for the day that a phone is lost, cookies of a session.
void forEachSpokenSecret(std::string_view text, std::function<void(std::size_t, std::size_t)> const& found);

}
