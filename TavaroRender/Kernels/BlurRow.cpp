#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "TavaroRender/Kernels/BlurRow.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <TavaroRender/Kernels/Private/BlurRow.h>

#include <algorithm>
#include <cstddef>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Channels = hn::CappedTag<std::int32_t, 4>; // of one pixel, or as many as the vector unit takes

void addRow(std::int32_t* sums, std::uint8_t const* added, std::uint8_t const* removed, int count) {
    hn::ScalableTag<std::int32_t> const whole;
    hn::Rebind<std::uint8_t, decltype(whole)> const bytes;
    auto const total = 4 * static_cast<std::size_t>(count);
    auto const n = hn::Lanes(whole);
    std::size_t i = 0;
    for (; i + n <= total; i += n) {
        auto const more = hn::PromoteTo(whole, hn::LoadU(bytes, added + i));
        auto const less = hn::PromoteTo(whole, hn::LoadU(bytes, removed + i));
        hn::StoreU(hn::Add(hn::LoadU(whole, sums + i), hn::Sub(more, less)), whole, sums + i);
    }
    for (; i < total; ++i) sums[i] += added[i] - removed[i];
}

/// One parity of the pixels: each mean differs from the last but one by two columns. `sums` and `out` begin with the
/// first of the channels.
HWY_INLINE void everySecondMean(std::int32_t const* sums, int reach, std::uint8_t* out, int first, int count) {
    Channels const channels;
    hn::Rebind<float, Channels> const single;
    hn::Rebind<std::uint8_t, Channels> const bytes;
    auto const share = hn::Set(single, 1.0f / (static_cast<float>(reach + 1) * static_cast<float>(reach + 1)));
    auto const column = [&](int i) HWY_ATTR { return hn::LoadU(channels, sums + 4 * static_cast<std::ptrdiff_t>(i)); };
    auto sum = hn::Zero(channels);
    for (int i = 0; i <= reach; ++i) sum = hn::Add(sum, column(first + 2 * i));
    for (int x = first; x < count; x += 2) {
        auto const mean = hn::Add(hn::Mul(hn::ConvertTo(single, sum), share), hn::Set(single, 0.5f));
        auto const rounded = hn::DemoteTo(bytes, hn::ConvertTo(channels, mean));
        hn::StoreU(rounded, bytes, out + 4 * static_cast<std::ptrdiff_t>(x));
        if (x + 2 < count) sum = hn::Add(sum, hn::Sub(column(x + 2 + 2 * reach), column(x)));
    }
}

void means(std::int32_t const* sums, int reach, std::uint8_t* out, int count) {
    for (std::size_t channel = 0; channel < 4; channel += hn::Lanes(Channels()))
        for (int const first : {0, 1})
            if (first < count) everySecondMean(sums + channel, reach, out + channel, first, count);
}

}
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace tavaro {

HWY_EXPORT(addRow);
HWY_EXPORT(means);

void moveSums(std::int32_t* sums, std::uint8_t const* added, std::uint8_t const* removed, int count) {
    HWY_DYNAMIC_DISPATCH(addRow)(sums, added, removed, count);
}

void meanRow(std::int32_t const* sums, int reach, std::uint8_t* out, int count) {
    HWY_DYNAMIC_DISPATCH(means)(sums, reach, out, count);
}

}
#endif
