#pragma once

namespace tavaro {

/// Packed vectors of the uniform blocks: the size and alignment that every compositor back end, GPUs included, expects.
struct alignas(8) Float2 {
    float x = 0;
    float y = 0;

    bool operator==(Float2 const&) const = default;
};

struct alignas(16) Float4 {
    float x = 0;
    float y = 0;
    float z = 0;
    float w = 0;

    bool operator==(Float4 const&) const = default;
};

static_assert(sizeof(Float2) == 8 && sizeof(Float4) == 16);

}
