#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "TavaroRender/Kernels/HalveRow.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <TavaroRender/Kernels/Private/HalveRow.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

void halve(std::uint8_t const* upper, std::uint8_t const* lower, std::uint8_t* out, int outWidth) {
    int x = 0;
#if HWY_TARGET != HWY_SCALAR
    hn::ScalableTag<std::int16_t> const wide;
    hn::Rebind<std::uint8_t, decltype(wide)> const narrow;
    hn::Repartition<std::uint64_t, decltype(wide)> const pixel;
    auto const lanes = hn::Lanes(wide);
    auto const step = static_cast<int>(lanes / 4);
    // Sums of the two rows; then of the even and the odd pixels.
    auto const column = [&](std::ptrdiff_t at) HWY_ATTR {
        auto const sum = hn::Add(hn::PromoteTo(wide, hn::LoadU(narrow, upper + at)),
                                 hn::PromoteTo(wide, hn::LoadU(narrow, lower + at)));
        return hn::BitCast(pixel, sum);
    };
    for (; x + step <= outWidth; x += step) {
        auto const at = 8 * static_cast<std::ptrdiff_t>(x);
        auto const low = column(at);
        auto const high = column(at + static_cast<std::ptrdiff_t>(lanes));
        auto const even = hn::BitCast(wide, hn::ConcatEven(pixel, high, low));
        auto const odd = hn::BitCast(wide, hn::ConcatOdd(pixel, high, low));
        auto const mean = hn::ShiftRight<2>(hn::Add(hn::Add(even, odd), hn::Set(wide, 2)));
        hn::StoreU(hn::DemoteTo(narrow, mean), narrow, out + 4 * static_cast<std::ptrdiff_t>(x));
    }
#endif
    for (; x < outWidth; ++x)
        for (int c = 0; c < 4; ++c) {
            auto const left = 8 * x + c;
            auto const right = left + 4;
            out[4 * x + c] =
                static_cast<std::uint8_t>((upper[left] + upper[right] + lower[left] + lower[right] + 2) >> 2);
        }
}

}
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace tavaro {

HWY_EXPORT(halve);

void halveEvenRow(std::uint8_t const* upper, std::uint8_t const* lower, std::uint8_t* out, int outWidth) {
    HWY_DYNAMIC_DISPATCH(halve)(upper, lower, out, outWidth);
}

}
#endif
