#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// Raw bytes inside a document, written as base64 text.
struct Data {
    std::vector<std::uint8_t> bytes;

    static std::optional<Data> fromBase64(std::string_view text);
    std::string base64() const;

    bool operator==(Data const&) const = default;
};

}
