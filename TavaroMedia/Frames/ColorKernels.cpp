#include <TavaroMedia/Frames/Private/ColorKernels.h>

#include <cmath>
#include <cstring>
#include <vector>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "TavaroMedia/Frames/ColorKernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using D16 = hn::ScalableTag<std::int16_t>;
using DU16 = hn::RebindToUnsigned<D16>;
using D8 = hn::Repartition<std::uint8_t, D16>;
using V16 = hn::Vec<D16>;
using V8 = hn::Vec<D8>;

// A vector of bytes holds the pixels of even columns in the low bytes of its 16-bit lanes and those of odd columns in
// the high ones, so taking a row apart and putting it together again needs no shuffle.
HWY_INLINE V16 evenColumns(V8 bytes) {
    return hn::BitCast(D16(), hn::And(hn::BitCast(DU16(), bytes), hn::Set(DU16(), 0xFF)));
}
HWY_INLINE V16 oddColumns(V8 bytes) { return hn::BitCast(D16(), hn::ShiftRight<8>(hn::BitCast(DU16(), bytes))); }

HWY_INLINE V8 together(V16 even, V16 odd) { return hn::BitCast(D8(), hn::Or(even, hn::ShiftLeft<8>(odd))); }

// From six fractional bits to 0…255.
HWY_INLINE V16 rounded(V16 value) {
    D16 const d;
    auto const whole = hn::ShiftRight<6>(hn::SaturatedAdd(value, hn::Set(d, 32)));
    return hn::Min(hn::Max(whole, hn::Zero(d)), hn::Set(d, 255));
}

struct RGB {
    V16 red, green, blue;
};

// `cb` and `cr` are centred and eightfold; all terms have six fractional bits, and saturate beyond what is visible.
HWY_INLINE RGB toRGB(V16 luma, V16 cb, V16 cr, FromYCbCr const& matrix) {
    D16 const d;
    auto const y =
        hn::MulFixedPoint15(hn::ShiftLeft<7>(hn::Sub(luma, hn::Set(d, matrix.lumaOffset))), hn::Set(d, matrix.luma));
    auto const b = hn::ShiftLeft<5>(cb);
    auto const r = hn::ShiftLeft<5>(cr);
    auto const green = hn::Add(hn::MulFixedPoint15(b, hn::Set(d, matrix.greenFromCb)),
                               hn::MulFixedPoint15(r, hn::Set(d, matrix.greenFromCr)));
    return {rounded(hn::SaturatedAdd(y, hn::MulFixedPoint15(r, hn::Set(d, matrix.redFromCr)))),
            rounded(hn::SaturatedAdd(y, green)),
            rounded(hn::SaturatedAdd(y, hn::MulFixedPoint15(b, hn::Set(d, matrix.blueFromCb))))};
}

// One vector of luma to RGBA; `cb` and `cr` point at fourfold centred chroma, one sample more than half the pixels.
HWY_INLINE void convertVector(std::uint8_t const* luma, std::int16_t const* cb, std::int16_t const* cr,
                              FromYCbCr const& matrix, std::uint8_t* rgba) {
    D16 const d;
    D8 const d8;
    auto const y = hn::LoadU(d8, luma);
    auto const cb0 = hn::LoadU(d, cb);
    auto const cr0 = hn::LoadU(d, cr);
    auto const even = toRGB(evenColumns(y), hn::Add(cb0, cb0), hn::Add(cr0, cr0), matrix);
    auto const odd =
        toRGB(oddColumns(y), hn::Add(cb0, hn::LoadU(d, cb + 1)), hn::Add(cr0, hn::LoadU(d, cr + 1)), matrix);
    hn::StoreInterleaved4(together(even.red, odd.red), together(even.green, odd.green), together(even.blue, odd.blue),
                          hn::Set(d8, 255), d8, rgba);
}

// 3·near + far, centred: four times the chroma at the row.
HWY_INLINE void blendChroma(std::uint8_t const* near, std::uint8_t const* far, int count, std::int16_t* to) {
    D16 const d;
    hn::Rebind<std::uint8_t, D16> const d8;
    int const lanes = static_cast<int>(hn::Lanes(d));
    int i = 0;
    for (; i + lanes <= count; i += lanes) {
        auto const a = hn::PromoteTo(d, hn::LoadU(d8, near + i));
        auto const b = hn::PromoteTo(d, hn::LoadU(d8, far + i));
        hn::StoreU(hn::Sub(hn::Add(hn::Add(a, hn::Add(a, a)), b), hn::Set(d, 512)), d, to + i);
    }
    for (; i < count; ++i) to[i] = static_cast<std::int16_t>(3 * near[i] + far[i] - 512);
    to[count] = to[count - 1];
}

void fromYCbCr420(std::uint8_t const* luma, ChromaRows const& chroma, int width, FromYCbCr const& matrix,
                  std::uint8_t* rgba, std::int16_t* scratch, int scratchRow) {
    int const lanes = static_cast<int>(hn::Lanes(D8()));
    auto* const cb = scratch;
    auto* const cr = scratch + scratchRow;
    blendChroma(chroma.nearCb, chroma.farCb, (width + 1) / 2, cb);
    blendChroma(chroma.nearCr, chroma.farCr, (width + 1) / 2, cr);
    int x = 0;
    for (; x + lanes <= width; x += lanes) convertVector(luma + x, cb + x / 2, cr + x / 2, matrix, rgba + 4 * x);
    if (x == width) return;
    std::uint8_t lumaEnd[HWY_MAX_BYTES] = {};
    std::uint8_t rgbaEnd[4 * HWY_MAX_BYTES];
    auto const rest = static_cast<std::size_t>(width - x);
    std::memcpy(lumaEnd, luma + x, rest);
    convertVector(lumaEnd, cb + x / 2, cr + x / 2, matrix, rgbaEnd);
    std::memcpy(rgba + 4 * x, rgbaEnd, 4 * rest);
}

// BT.709 in limited range; 15 fractional bits. Luma: on inputs shifted up by 7, six fractional bits come out. Chroma:
// on the sum of two pixels shifted up by 6, and ×32 comes out. The weights of a chroma add up to 0, so grey stays grey.
namespace to709 {
constexpr std::int16_t lumaRed = 2991, lumaGreen = 10063, lumaBlue = 1016;
constexpr std::int16_t cbRed = -1649, cbGreen = -5547, cbBlue = 7196;
constexpr std::int16_t crRed = 7196, crGreen = -6536, crBlue = -660;
}

HWY_INLINE V16 lumaOf(V16 red, V16 green, V16 blue) {
    D16 const d;
    auto const r = hn::MulFixedPoint15(hn::ShiftLeft<7>(red), hn::Set(d, to709::lumaRed));
    auto const g = hn::MulFixedPoint15(hn::ShiftLeft<7>(green), hn::Set(d, to709::lumaGreen));
    auto const b = hn::MulFixedPoint15(hn::ShiftLeft<7>(blue), hn::Set(d, to709::lumaBlue));
    return hn::Add(hn::Add(r, g), hn::Add(b, hn::Set(d, 16 * 64)));
}

struct Chroma {
    V16 cb, cr;
};

// Of sums of two pixels.
HWY_INLINE Chroma chromaOf(V16 red, V16 green, V16 blue) {
    D16 const d;
    auto const r = hn::ShiftLeft<6>(red);
    auto const g = hn::ShiftLeft<6>(green);
    auto const b = hn::ShiftLeft<6>(blue);
    auto const weigh = [&](std::int16_t kr, std::int16_t kg, std::int16_t kb) {
        return hn::Add(hn::Add(hn::MulFixedPoint15(r, hn::Set(d, kr)), hn::MulFixedPoint15(g, hn::Set(d, kg))),
                       hn::MulFixedPoint15(b, hn::Set(d, kb)));
    };
    return {weigh(to709::cbRed, to709::cbGreen, to709::cbBlue), weigh(to709::crRed, to709::crGreen, to709::crBlue)};
}

struct Pixels {
    V8 red, green, blue;
};

template<bool isBGRA> HWY_INLINE Pixels load(std::uint8_t const* row) {
    D8 const d;
    V8 first, second, third, fourth;
    hn::LoadInterleaved4(d, row, first, second, third, fourth);
    return isBGRA ? Pixels{third, second, first} : Pixels{first, second, third};
}

// Chroma of single columns at ×64, kept until their neighbours are known: [0] is the column left of the picture.
struct ColumnChroma {
    std::int16_t* evenCb;
    std::int16_t* oddCb;
    std::int16_t* evenCr;
    std::int16_t* oddCr;
};

HWY_INLINE ColumnChroma columns(std::int16_t* scratch, int scratchRow) {
    return {scratch, scratch + scratchRow, scratch + 2 * scratchRow, scratch + 3 * scratchRow};
}

HWY_INLINE void keepColumns(V8 red0, V8 red1, V8 green0, V8 green1, V8 blue0, V8 blue1, ColumnChroma const& to,
                            int column) {
    D16 const d;
    auto const even =
        chromaOf(hn::Add(evenColumns(red0), evenColumns(red1)), hn::Add(evenColumns(green0), evenColumns(green1)),
                 hn::Add(evenColumns(blue0), evenColumns(blue1)));
    auto const odd =
        chromaOf(hn::Add(oddColumns(red0), oddColumns(red1)), hn::Add(oddColumns(green0), oddColumns(green1)),
                 hn::Add(oddColumns(blue0), oddColumns(blue1)));
    hn::StoreU(even.cb, d, to.evenCb + 1 + column);
    hn::StoreU(even.cr, d, to.evenCr + 1 + column);
    hn::StoreU(odd.cb, d, to.oddCb + 1 + column);
    hn::StoreU(odd.cr, d, to.oddCr + 1 + column);
}

// Weights 1 2 1 around an even column; ×256 of the chroma. Left of the picture its first column goes on.
HWY_INLINE V16 sumColumns(std::int16_t const* even, std::int16_t const* odd, int column) {
    D16 const d;
    auto const middle = hn::LoadU(d, even + 1 + column);
    return hn::Add(hn::Add(hn::LoadU(d, odd + column), hn::LoadU(d, odd + 1 + column)), hn::Add(middle, middle));
}

HWY_INLINE void continueToTheLeft(ColumnChroma const& kept) {
    kept.oddCb[0] = kept.evenCb[1];
    kept.oddCr[0] = kept.evenCr[1];
}

HWY_INLINE void storeChroma8(std::int16_t const* even, std::int16_t const* odd, int count, std::uint8_t* to) {
    D16 const d;
    hn::Rebind<std::uint8_t, D16> const d8;
    int const lanes = static_cast<int>(hn::Lanes(d));
    auto const vector = [&](int i) {
        auto const whole = hn::ShiftRight<8>(hn::Add(sumColumns(even, odd, i), hn::Set(d, 128)));
        return hn::DemoteTo(d8, hn::Add(whole, hn::Set(d, 128)));
    };
    int i = 0;
    for (; i + lanes <= count; i += lanes) hn::StoreU(vector(i), d8, to + i);
    if (i == count) return;
    std::uint8_t end[HWY_MAX_BYTES];
    hn::StoreU(vector(i), d8, end);
    std::memcpy(to + i, end, static_cast<std::size_t>(count - i));
}

HWY_INLINE void storeChroma10(std::int16_t const* even, std::int16_t const* odd, int count, std::uint16_t* to) {
    D16 const d;
    int const lanes = static_cast<int>(hn::Lanes(d));
    auto const vector = [&](int i) {
        auto const whole = hn::ShiftRight<6>(hn::Add(sumColumns(even, odd, i), hn::Set(d, 32)));
        return hn::BitCast(DU16(), hn::Add(whole, hn::Set(d, 512)));
    };
    int i = 0;
    for (; i + lanes <= count; i += lanes) hn::StoreU(vector(i), DU16(), to + i);
    if (i == count) return;
    std::uint16_t end[HWY_MAX_BYTES / 2];
    hn::StoreU(vector(i), DU16(), end);
    std::memcpy(to + i, end, 2 * static_cast<std::size_t>(count - i));
}

HWY_INLINE V8 luma8(Pixels const& pixels) {
    auto const even = lumaOf(evenColumns(pixels.red), evenColumns(pixels.green), evenColumns(pixels.blue));
    auto const odd = lumaOf(oddColumns(pixels.red), oddColumns(pixels.green), oddColumns(pixels.blue));
    return together(rounded(even), rounded(odd));
}

template<bool isBGRA> HWY_INLINE void to420Vector(std::uint8_t const* row0, std::uint8_t const* row1,
                                                  std::uint8_t* luma0, std::uint8_t* luma1, ColumnChroma const& kept,
                                                  int column) {
    D8 const d8;
    auto const a = load<isBGRA>(row0);
    auto const b = load<isBGRA>(row1);
    hn::StoreU(luma8(a), d8, luma0);
    hn::StoreU(luma8(b), d8, luma1);
    keepColumns(a.red, b.red, a.green, b.green, a.blue, b.blue, kept, column);
}

template<bool isBGRA> HWY_INLINE void keepColumnBefore(std::uint8_t const* const rows[2], ColumnChroma const& kept) {
    std::uint8_t pixels[2][4 * HWY_MAX_BYTES] = {};
    for (int i = 0; i < 2; ++i) std::memcpy(pixels[i], rows[i] - 4, 4);
    auto const a = load<isBGRA>(pixels[0]), b = load<isBGRA>(pixels[1]);
    auto const sum = [](V8 x, V8 y) { return hn::Add(evenColumns(x), evenColumns(y)); };
    auto const chroma = chromaOf(sum(a.red, b.red), sum(a.green, b.green), sum(a.blue, b.blue));
    kept.oddCb[0] = hn::GetLane(chroma.cb);
    kept.oddCr[0] = hn::GetLane(chroma.cr);
}

template<bool isBGRA> HWY_INLINE void to420(std::uint8_t const* const rows[2], int width, RowPairYCbCr420 const& to,
                                            ColumnChroma const& kept, ColumnBefore before) {
    int const lanes = static_cast<int>(hn::Lanes(D8()));
    int x = 0;
    for (; x + lanes <= width; x += lanes)
        to420Vector<isBGRA>(rows[0] + 4 * x, rows[1] + 4 * x, to.luma[0] + x, to.luma[1] + x, kept, x / 2);
    if (x < width) {
        std::uint8_t pixels[2][4 * HWY_MAX_BYTES] = {};
        std::uint8_t luma[2][HWY_MAX_BYTES];
        auto const rest = static_cast<std::size_t>(width - x);
        for (int i = 0; i < 2; ++i) std::memcpy(pixels[i], rows[i] + 4 * x, 4 * rest);
        to420Vector<isBGRA>(pixels[0], pixels[1], luma[0], luma[1], kept, x / 2);
        for (int i = 0; i < 2; ++i) std::memcpy(to.luma[i] + x, luma[i], rest);
    }
    before == ColumnBefore::there ? keepColumnBefore<isBGRA>(rows, kept) : continueToTheLeft(kept);
    storeChroma8(kept.evenCb, kept.oddCb, width / 2, to.cb);
    storeChroma8(kept.evenCr, kept.oddCr, width / 2, to.cr);
}

void toYCbCr420(std::uint8_t const* const rows[2], bool isBGRA, int width, RowPairYCbCr420 const& to,
                ColumnBefore before, std::int16_t* scratch, int scratchRow) {
    auto const kept = columns(scratch, scratchRow);
    if (isBGRA) {
        to420<true>(rows, width, to, kept, before);
    } else {
        to420<false>(rows, width, to, kept, before);
    }
}

// Even and odd columns of 10-bit luma leave interleaved.
template<bool isBGRA>
HWY_INLINE void to422Vector(std::uint8_t const* row, std::uint16_t* luma, ColumnChroma const& kept, int column) {
    DU16 const d;
    auto const a = load<isBGRA>(row);
    auto const tenBits = [](V16 value) {
        return hn::BitCast(DU16(), hn::ShiftRight<4>(hn::Add(value, hn::Set(D16(), 8))));
    };
    hn::StoreInterleaved2(tenBits(lumaOf(evenColumns(a.red), evenColumns(a.green), evenColumns(a.blue))),
                          tenBits(lumaOf(oddColumns(a.red), oddColumns(a.green), oddColumns(a.blue))), d, luma);
    keepColumns(a.red, a.red, a.green, a.green, a.blue, a.blue, kept, column);
}

template<bool isBGRA>
HWY_INLINE void to422(std::uint8_t const* row, int width, RowYCbCr422 const& to, ColumnChroma const& kept) {
    int const lanes = static_cast<int>(hn::Lanes(D8()));
    int x = 0;
    for (; x + lanes <= width; x += lanes) to422Vector<isBGRA>(row + 4 * x, to.luma + x, kept, x / 2);
    if (x < width) {
        std::uint8_t pixels[4 * HWY_MAX_BYTES] = {};
        std::uint16_t luma[HWY_MAX_BYTES];
        auto const rest = static_cast<std::size_t>(width - x);
        std::memcpy(pixels, row + 4 * x, 4 * rest);
        to422Vector<isBGRA>(pixels, luma, kept, x / 2);
        std::memcpy(to.luma + x, luma, 2 * rest);
    }
    continueToTheLeft(kept);
    storeChroma10(kept.evenCb, kept.oddCb, width / 2, to.cb);
    storeChroma10(kept.evenCr, kept.oddCr, width / 2, to.cr);
}

void toYCbCr422(std::uint8_t const* row, bool isBGRA, int width, RowYCbCr422 const& to, std::int16_t* scratch,
                int scratchRow) {
    auto const kept = columns(scratch, scratchRow);
    if (isBGRA) {
        to422<true>(row, width, to, kept);
    } else {
        to422<false>(row, width, to, kept);
    }
}

// Centred and 128-fold, and the last sample once more, for the odd column beside it.
HWY_INLINE void centreChroma(std::uint8_t const* from, int count, std::int16_t* to) {
    D16 const d;
    hn::Rebind<std::uint8_t, D16> const d8;
    int const lanes = static_cast<int>(hn::Lanes(d));
    int i = 0;
    for (; i + lanes <= count; i += lanes) {
        auto const centred = hn::Sub(hn::PromoteTo(d, hn::LoadU(d8, from + i)), hn::Set(d, 128));
        hn::StoreU(hn::ShiftLeft<7>(centred), d, to + i);
    }
    for (; i < count; ++i) to[i] = static_cast<std::int16_t>((from[i] - 128) * 128);
    to[count] = to[count - 1];
}

// `cb` and `cr` are centred and 256-fold; six fractional bits come out.
HWY_INLINE V16 weighed(V16 cb, V16 cr, std::int16_t fromCb, std::int16_t fromCr) {
    D16 const d;
    return hn::Add(hn::MulFixedPoint15(cb, hn::Set(d, fromCb)), hn::MulFixedPoint15(cr, hn::Set(d, fromCr)));
}

HWY_INLINE V16 within(V16 value, std::int16_t least, std::int16_t most) {
    D16 const d;
    return hn::Min(hn::Max(value, hn::Set(d, least)), hn::Set(d, most));
}

struct ChromaColumns {
    V16 even, odd; // what they add to the luma of their columns
};

HWY_INLINE V8 limitedLuma(V8 luma, ChromaColumns const& chroma, ToBT709 const& matrix) {
    D16 const d;
    auto const column = [&](V16 value, V16 added) {
        auto const centred = hn::ShiftLeft<7>(hn::Sub(value, hn::Set(d, matrix.lumaOffset)));
        auto const weighed = hn::MulFixedPoint15(centred, hn::Set(d, matrix.luma));
        return within(rounded(hn::Add(hn::Add(weighed, added), hn::Set(d, 16 * 64))), 16, 235);
    };
    return together(column(evenColumns(luma), chroma.even), column(oddColumns(luma), chroma.odd));
}

HWY_INLINE void to709Vector(std::uint8_t const* const luma[2], std::int16_t const* cb, std::int16_t const* cr,
                            ToBT709 const& matrix, RowPairYCbCr420 const& to) {
    D16 const d;
    D8 const d8;
    hn::Rebind<std::uint8_t, D16> const half;
    auto const halfCb = hn::LoadU(d, cb), halfCr = hn::LoadU(d, cr);
    auto const cb0 = hn::Add(halfCb, halfCb), cr0 = hn::Add(halfCr, halfCr);
    ChromaColumns const chroma{weighed(cb0, cr0, matrix.lumaFromCb, matrix.lumaFromCr),
                               weighed(hn::Add(halfCb, hn::LoadU(d, cb + 1)), hn::Add(halfCr, hn::LoadU(d, cr + 1)),
                                       matrix.lumaFromCb, matrix.lumaFromCr)};
    for (int row = 0; row < 2; ++row)
        hn::StoreU(limitedLuma(hn::LoadU(d8, luma[row]), chroma, matrix), d8, to.luma[row]);
    auto const chroma8 = [&](V16 value) {
        return hn::DemoteTo(half, within(rounded(hn::Add(value, hn::Set(d, 128 * 64))), 16, 240));
    };
    hn::StoreU(chroma8(weighed(cb0, cr0, matrix.cbFromCb, matrix.cbFromCr)), half, to.cb);
    hn::StoreU(chroma8(weighed(cb0, cr0, matrix.crFromCb, matrix.crFromCr)), half, to.cr);
}

void toBT709(YCbCrRows const& from, int width, ToBT709 const& matrix, RowPairYCbCr420 const& to, std::int16_t* scratch,
             int scratchRow) {
    int const lanes = static_cast<int>(hn::Lanes(D8()));
    auto* const cb = scratch;
    auto* const cr = scratch + scratchRow;
    centreChroma(from.cb, width / 2, cb);
    centreChroma(from.cr, width / 2, cr);
    int x = 0;
    for (; x + lanes <= width; x += lanes) {
        std::uint8_t const* const luma[2] = {from.luma[0] + x, from.luma[1] + x};
        to709Vector(luma, cb + x / 2, cr + x / 2, matrix,
                    {{to.luma[0] + x, to.luma[1] + x}, to.cb + x / 2, to.cr + x / 2});
    }
    if (x == width) return;
    std::uint8_t lumaEnd[2][HWY_MAX_BYTES] = {}, made[2][HWY_MAX_BYTES];
    std::uint8_t cbEnd[HWY_MAX_BYTES], crEnd[HWY_MAX_BYTES];
    auto const rest = static_cast<std::size_t>(width - x);
    for (int row = 0; row < 2; ++row) std::memcpy(lumaEnd[row], from.luma[row] + x, rest);
    std::uint8_t const* const luma[2] = {lumaEnd[0], lumaEnd[1]};
    to709Vector(luma, cb + x / 2, cr + x / 2, matrix, {{made[0], made[1]}, cbEnd, crEnd});
    for (int row = 0; row < 2; ++row) std::memcpy(to.luma[row] + x, made[row], rest);
    std::memcpy(to.cb + x / 2, cbEnd, rest / 2);
    std::memcpy(to.cr + x / 2, crEnd, rest / 2);
}

HWY_INLINE void apartVectors(std::uint8_t const* const rows[2], Order422 order, RowPairYCbCr420 const& to) {
    D8 const d;
    V8 lumaEven[2], lumaOdd[2], cb[2], cr[2];
    for (int row = 0; row < 2; ++row) {
        if (order == Order422::lumaFirst)
            hn::LoadInterleaved4(d, rows[row], lumaEven[row], cb[row], lumaOdd[row], cr[row]);
        else
            hn::LoadInterleaved4(d, rows[row], cb[row], lumaEven[row], cr[row], lumaOdd[row]);
        hn::StoreInterleaved2(lumaEven[row], lumaOdd[row], d, to.luma[row]);
    }
    hn::StoreU(hn::AverageRound(cb[0], cb[1]), d, to.cb);
    hn::StoreU(hn::AverageRound(cr[0], cr[1]), d, to.cr);
}

void apart422(std::uint8_t const* const rows[2], Order422 order, int width, RowPairYCbCr420 const& to) {
    int const step = 2 * static_cast<int>(hn::Lanes(D8()));
    int x = 0;
    for (; x + step <= width; x += step) {
        std::uint8_t const* const now[2] = {rows[0] + 2 * x, rows[1] + 2 * x};
        apartVectors(now, order, {{to.luma[0] + x, to.luma[1] + x}, to.cb + x / 2, to.cr + x / 2});
    }
    if (x == width) return;
    std::uint8_t ends[2][4 * HWY_MAX_BYTES] = {}, luma[2][2 * HWY_MAX_BYTES];
    std::uint8_t cb[HWY_MAX_BYTES], cr[HWY_MAX_BYTES];
    auto const rest = static_cast<std::size_t>(width - x), pairs = (rest + 1) / 2;
    for (int row = 0; row < 2; ++row) std::memcpy(ends[row], rows[row] + 2 * x, 4 * pairs);
    std::uint8_t const* const now[2] = {ends[0], ends[1]};
    apartVectors(now, order, {{luma[0], luma[1]}, cb, cr});
    for (int row = 0; row < 2; ++row) std::memcpy(to.luma[row] + x, luma[row], rest);
    std::memcpy(to.cb + x / 2, cb, pairs);
    std::memcpy(to.cr + x / 2, cr, pairs);
}

}
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace tavaro {

HWY_EXPORT(fromYCbCr420);
HWY_EXPORT(toYCbCr420);
HWY_EXPORT(toYCbCr422);
HWY_EXPORT(toBT709);
HWY_EXPORT(apart422);

namespace {

constexpr int widestVector = 2048 / 16; // in 16-bit lanes, of any processor there is a target for

// Memory for `rows` rows of half the width, each with a vector's room behind it; kept for the thread's life.
struct Scratch {
    std::int16_t* start;
    int row;
};
Scratch scratch(int width, int rows) {
    thread_local std::vector<std::int16_t> memory;
    int const row = (width / 2 + 2 + widestVector + 31) & ~31;
    if (memory.size() < static_cast<std::size_t>(row * rows)) memory.resize(static_cast<std::size_t>(row * rows));
    return {memory.data(), row};
}

std::int16_t fixed(double value) { return static_cast<std::int16_t>(std::lround(value)); }

}

FromYCbCr::FromYCbCr(LumaWeights weights, SampleRange range) {
    auto const green = 1 - weights.red - weights.blue;
    auto const lumaScale = range == SampleRange::limited ? 255.0 / 219 : 1.0;
    auto const chromaScale = range == SampleRange::limited ? 255.0 / 224 : 1.0;
    auto const cr = 2 * (1 - weights.red) * chromaScale;
    auto const cb = 2 * (1 - weights.blue) * chromaScale;
    // ×64 of the result, from luma × 128 and chroma × 256, in 15 fractional bits.
    auto const chroma = 64.0 / 256 * 32768;
    lumaOffset = range == SampleRange::limited ? 16 : 0;
    luma = fixed(lumaScale * 64 / 128 * 32768);
    redFromCr = fixed(cr * chroma);
    greenFromCr = fixed(-cr * weights.red / green * chroma);
    greenFromCb = fixed(-cb * weights.blue / green * chroma);
    blueFromCb = fixed(cb * chroma);
}

ToBT709::ToBT709(LumaWeights weights, SampleRange range) {
    constexpr LumaWeights film; // BT.709
    bool const isLimited = range == SampleRange::limited;
    // Red, green and blue of one unit of each chroma, and the luma that these make.
    double const lumaScale = isLimited ? 1 : 219.0 / 255, chromaScale = isLimited ? 1 : 224.0 / 255;
    double const green = 1 - weights.red - weights.blue, filmGreen = 1 - film.red - film.blue;
    double const blueOfCb = 2 * (1 - weights.blue), redOfCr = 2 * (1 - weights.red);
    double const lumaOfCb = film.blue * blueOfCb - filmGreen * weights.blue * blueOfCb / green;
    double const lumaOfCr = film.red * redOfCr - filmGreen * weights.red * redOfCr / green;
    // ×64 of the result, from luma × 128 and chroma × 256, in 15 fractional bits.
    double const ofLuma = 64.0 / 128 * 32768 * lumaScale, ofChroma = 64.0 / 256 * 32768 * chromaScale;
    double const filmBlue = 2 * (1 - film.blue), filmRed = 2 * (1 - film.red);
    lumaOffset = isLimited ? 16 : 0;
    luma = fixed(ofLuma);
    lumaFromCb = fixed(ofChroma * lumaOfCb * 219 / 224);
    lumaFromCr = fixed(ofChroma * lumaOfCr * 219 / 224);
    cbFromCb = fixed(ofChroma * (blueOfCb - lumaOfCb) / filmBlue);
    cbFromCr = fixed(ofChroma * -lumaOfCr / filmBlue);
    crFromCb = fixed(ofChroma * -lumaOfCb / filmRed);
    crFromCr = fixed(ofChroma * (redOfCr - lumaOfCr) / filmRed);
}

void rowFromYCbCr420(std::uint8_t const* luma, ChromaRows const& chroma, int width, FromYCbCr const& matrix,
                     std::uint8_t* rgba) {
    auto const memory = scratch(width, 2);
    HWY_DYNAMIC_DISPATCH(fromYCbCr420)(luma, chroma, width, matrix, rgba, memory.start, memory.row);
}

void rowsToYCbCr420(std::uint8_t const* const rows[2], bool isBGRA, int width, RowPairYCbCr420 const& to,
                    ColumnBefore before) {
    auto const memory = scratch(width, 4);
    HWY_DYNAMIC_DISPATCH(toYCbCr420)(rows, isBGRA, width, to, before, memory.start, memory.row);
}

void rowToYCbCr422(std::uint8_t const* row, bool isBGRA, int width, RowYCbCr422 const& to) {
    auto const memory = scratch(width, 4);
    HWY_DYNAMIC_DISPATCH(toYCbCr422)(row, isBGRA, width, to, memory.start, memory.row);
}

void rowsToBT709(YCbCrRows const& from, int width, ToBT709 const& matrix, RowPairYCbCr420 const& to) {
    auto const memory = scratch(width, 2);
    HWY_DYNAMIC_DISPATCH(toBT709)(from, width, matrix, to, memory.start, memory.row);
}

void rowsFrom422(std::uint8_t const* const rows[2], Order422 order, int width, RowPairYCbCr420 const& to) {
    HWY_DYNAMIC_DISPATCH(apart422)(rows, order, width, to);
}

}
#endif
