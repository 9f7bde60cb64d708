#pragma once

#include <cstdint>

namespace tavaro {

/// A matrix of ITU-R BT.601, 709, 2020 …: luma is Kr·R + (1 − Kr − Kb)·G + Kb·B.
struct LumaWeights {
    double red = 0.2126;
    double blue = 0.0722;
};

enum class SampleRange { limited, full };

/// Y′CbCr → R′G′B′ in fixed point: 15 fractional bits on inputs that are shifted up so that a product has six.
struct FromYCbCr {
    std::int16_t lumaOffset = 16;
    std::int16_t luma = 0;
    std::int16_t redFromCr = 0;
    std::int16_t greenFromCb = 0;
    std::int16_t greenFromCr = 0;
    std::int16_t blueFromCb = 0;

    FromYCbCr(LumaWeights weights, SampleRange range);
};

/// The chroma rows that one row of a 4:2:0 picture lies between: three quarters of the near one, a quarter of the
/// other.
struct ChromaRows {
    std::uint8_t const* nearCb;
    std::uint8_t const* farCb;
    std::uint8_t const* nearCr;
    std::uint8_t const* farCr;
};

/// One row of 8-bit 4:2:0, chroma sited left and upsampled bilinearly, to opaque RGBA. Any width and alignment;
/// (width + 1) / 2 chroma samples are read.
void rowFromYCbCr420(std::uint8_t const* luma, ChromaRows const& chroma, int width, FromYCbCr const& matrix,
                     std::uint8_t* rgba);

/// Two rows of RGBA (or BGRA) to two rows of luma and one of chroma: BT.709, limited range. Chroma sits on the even
/// columns, between the rows: weights 1 2 1 across, 1 1 down. `width` is even.
struct RowPairYCbCr420 {
    std::uint8_t* luma[2];
    std::uint8_t* cb;
    std::uint8_t* cr;
};
/// Whether the rows go on to the left of where they are given, which counts for the first chroma; else their first
/// column goes on there.
enum class ColumnBefore { none, there };
void rowsToYCbCr420(std::uint8_t const* const rows[2], bool isBGRA, int width, RowPairYCbCr420 const& to,
                    ColumnBefore before = ColumnBefore::none);

/// One row of RGBA (or BGRA) to 10-bit 4:2:2, the same colours and siting.
struct RowYCbCr422 {
    std::uint16_t* luma;
    std::uint16_t* cb;
    std::uint16_t* cr;
};
void rowToYCbCr422(std::uint8_t const* row, bool isBGRA, int width, RowYCbCr422 const& to);

/// Y′CbCr of another matrix or range → that of BT.709 in limited range, in fixed point: 15 fractional bits on inputs
/// that are shifted up so that a product has six.
struct ToBT709 {
    std::int16_t lumaOffset = 16;
    std::int16_t luma = 0;
    std::int16_t lumaFromCb = 0, lumaFromCr = 0;
    std::int16_t cbFromCb = 0, cbFromCr = 0;
    std::int16_t crFromCb = 0, crFromCr = 0;

    ToBT709(LumaWeights weights, SampleRange range);
};

/// Two rows of luma and the row of chroma between them.
struct YCbCrRows {
    std::uint8_t const* luma[2];
    std::uint8_t const* cb;
    std::uint8_t const* cr;
};

/// Two rows of 8-bit 4:2:0, chroma sited left, to the same in BT.709, limited range. What is blacker than black or
/// whiter than white there is black or white. `width` is even.
void rowsToBT709(YCbCrRows const& from, int width, ToBT709 const& matrix, RowPairYCbCr420 const& to);

enum class Order422 { lumaFirst, chromaFirst }; // Y Cb Y Cr; Cb Y Cr Y

/// Two rows of interleaved 4:2:2 as 4:2:0: the chroma of both becomes one row. Any width; (width + 1) / 2 pairs are
/// read.
void rowsFrom422(std::uint8_t const* const rows[2], Order422 order, int width, RowPairYCbCr420 const& to);

}
