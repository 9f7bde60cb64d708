#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace tavaro {

/// The secret that hashes of findings are made with. Card and phone numbers are few enough to try them all against a
/// plain hash, however slow it is, and a salt or key inside the document would be in the hands of whoever has that. So
/// the key is one of the user's, kept outside of all documents; somebody else's hashes of the same text are different,
/// and all that is lost by it is that what one user rejected is found again by another.
struct FindingKey {
    std::array<std::uint64_t, 2> words{};
    bool operator==(FindingKey const&) const = default;
};

/// For a finding's text, to know it again: the same for the same text and key on every machine and in every version,
/// and for texts that differ by look-alikes only. SipHash-2-4 (Aumasson, Bernstein, 2012), which tells nothing of the
/// text to whoever does not have the key.
std::string findingHash(std::string_view text, FindingKey const& key);

}
