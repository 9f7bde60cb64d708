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

HWY_INLINE void storeChroma8(std::int16_t const* even, std::int16_t* odd, int count, std::uint8_t* to) {
    D16 const d;
    hn::Rebind<std::uint8_t, D16> const d8;
    int const lanes = static_cast<int>(hn::Lanes(d));
    odd[0] = even[1];
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

HWY_INLINE void storeChroma10(std::int16_t const* even, std::int16_t* odd, int count, std::uint16_t* to) {
    D16 const d;
    int const lanes = static_cast<int>(hn::Lanes(d));
    odd[0] = even[1];
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

template<bool isBGRA> HWY_INLINE void to420(std::uint8_t const* const rows[2], int width, RowPairYCbCr420 const& to,
                                            ColumnChroma const& kept) {
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
    storeChroma8(kept.evenCb, kept.oddCb, width / 2, to.cb);
    storeChroma8(kept.evenCr, kept.oddCr, width / 2, to.cr);
}

void toYCbCr420(std::uint8_t const* const rows[2], bool isBGRA, int width, RowPairYCbCr420 const& to,
                std::int16_t* scratch, int scratchRow) {
    auto const kept = columns(scratch, scratchRow);
    if (isBGRA) {
        to420<true>(rows, width, to, kept);
    } else {
        to420<false>(rows, width, to, kept);
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

}
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace tavaro {

HWY_EXPORT(fromYCbCr420);
HWY_EXPORT(toYCbCr420);
HWY_EXPORT(toYCbCr422);

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

void rowFromYCbCr420(std::uint8_t const* luma, ChromaRows const& chroma, int width, FromYCbCr const& matrix,
                     std::uint8_t* rgba) {
    auto const memory = scratch(width, 2);
    HWY_DYNAMIC_DISPATCH(fromYCbCr420)(luma, chroma, width, matrix, rgba, memory.start, memory.row);
}

void rowsToYCbCr420(std::uint8_t const* const rows[2], bool isBGRA, int width, RowPairYCbCr420 const& to) {
    auto const memory = scratch(width, 4);
    HWY_DYNAMIC_DISPATCH(toYCbCr420)(rows, isBGRA, width, to, memory.start, memory.row);
}

void rowToYCbCr422(std::uint8_t const* row, bool isBGRA, int width, RowYCbCr422 const& to) {
    auto const memory = scratch(width, 4);
    HWY_DYNAMIC_DISPATCH(toYCbCr422)(row, isBGRA, width, to, memory.start, memory.row);
}

}
#endif
