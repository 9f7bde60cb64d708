#include <TavaroMedia/Frames/FrameConverter.h>

#include <algorithm>
#include <cassert>

#include <TavaroMedia/Frames/Private/ColorKernels.h>
#include <TavaroMedia/Frames/Private/EncoderPlanes.h>
#include <TavaroMedia/Frames/Private/PictureFormats.h>

namespace tavaro {

struct FrameConverter::State {
    GeneralConversion general;
};

FrameConverter::FrameConverter() : state_(std::make_unique<State>()) {}
FrameConverter::FrameConverter(FrameConverter&&) noexcept = default;
FrameConverter& FrameConverter::operator=(FrameConverter&&) noexcept = default;
FrameConverter::~FrameConverter() = default;

namespace {

std::uint8_t const* planeRow(AVFrame const& frame, int plane, int y) {
    return frame.data[plane] + std::ptrdiff_t{y} * frame.linesize[plane];
}

// Chroma rows lie between the luma rows 2k and 2k + 1, so an even row leans on the one above, an odd row on the one
// below.
void convert420Rows(AVFrame const& frame, FromYCbCr const& matrix, MutableImageView to, int begin, int end) {
    auto const lastChroma = (frame.height + 1) / 2 - 1;
    for (int y = begin; y < end; ++y) {
        auto const near = y / 2;
        auto const far = std::clamp(y % 2 == 0 ? near - 1 : near + 1, 0, lastChroma);
        ChromaRows const chroma{planeRow(frame, 1, near), planeRow(frame, 1, far), planeRow(frame, 2, near),
                                planeRow(frame, 2, far)};
        rowFromYCbCr420(planeRow(frame, 0, y), chroma, frame.width, matrix, to.row(y));
    }
}

template<class Sample> Sample* planeRow(AVFrame& frame, int plane, int y) {
    return reinterpret_cast<Sample*>(frame.data[plane] + std::ptrdiff_t{y} * frame.linesize[plane]);
}

}

void FrameConverter::convert(VideoFrame const& frame, Image& image, RowBands& rows) {
    if (image.width() != frame.width() || image.height() != frame.height())
        image = Image(frame.width(), frame.height());
    auto const& picture = frame.picture();
    if (!isPlain420(picture)) return state_->general.convert(picture, image.view());
    FromYCbCr const matrix(lumaWeights(*picture.frame), sampleRange(*picture.frame));
    auto const to = image.view();
    rows.run(to.height, [&](int begin, int end) { convert420Rows(*picture.frame, matrix, to, begin, end); });
}

namespace {

/// Pixels as numbers, 0xAARRGGBB.
void rowToRGB32(std::uint8_t const* pixels, bool isBGRA, int width, std::uint32_t* to) {
    int const red = isBGRA ? 2 : 0;
    int const blue = isBGRA ? 0 : 2;
    for (int x = 0; x < width; ++x, pixels += 4)
        to[x] = std::uint32_t{pixels[3]} << 24 | pixels[red] << 16 | pixels[1] << 8 | pixels[blue];
}

/// Of the pair of rows, the columns given, of which the first is even, and their chroma.
void fillPair(AVFrame& frame, ImageView image, PixelOrder order, int pair, PictureChanges::Columns const& columns) {
    auto const [x, end] = columns;
    std::uint8_t const* const rows[2] = {image.row(2 * pair) + 4 * x, image.row(2 * pair + 1) + 4 * x};
    rowsToYCbCr420(
        rows, order == PixelOrder::bgra, end - x,
        {{planeRow<std::uint8_t>(frame, 0, 2 * pair) + x, planeRow<std::uint8_t>(frame, 0, 2 * pair + 1) + x},
         planeRow<std::uint8_t>(frame, 1, pair) + x / 2,
         planeRow<std::uint8_t>(frame, 2, pair) + x / 2},
        x > 0 ? ColumnBefore::there : ColumnBefore::none);
}

}

void fillPicture(EncoderPicture& picture, ImageView image, PixelOrder order, PictureChanges const& changes) {
    auto& frame = *picture.planes().frame;
    assert(image.width >= frame.width && image.height >= frame.height && frame.format == AV_PIX_FMT_YUV420P);
    auto const [first, end] = changes.pairs();
    for (int pair = first; pair < std::min(end, frame.height / 2); ++pair) {
        auto const changed = changes.columns(pair);
        if (changed.isEmpty()) continue;
        // A chroma sample is made of three columns, the middle one even.
        PictureChanges::Columns const columns{changed.begin & ~1, std::min(changed.end / 2 * 2 + 2, frame.width)};
        if (!columns.isEmpty()) fillPair(frame, image, order, pair, columns);
    }
}

void fillPicture(EncoderPicture& picture, ImageView image, PixelOrder order, RowBands& rows) {
    auto& frame = *picture.planes().frame;
    assert(image.width >= frame.width && image.height >= frame.height);
    auto const isBGRA = order == PixelOrder::bgra;
    if (frame.format == AV_PIX_FMT_RGB32) {
        rows.run(frame.height, [&](int begin, int end) {
            for (int y = begin; y < end; ++y)
                rowToRGB32(image.row(y), isBGRA, frame.width, planeRow<std::uint32_t>(frame, 0, y));
        });
        return;
    }
    if (frame.format == AV_PIX_FMT_YUV422P10) {
        rows.run(frame.height, [&](int begin, int end) {
            for (int y = begin; y < end; ++y)
                rowToYCbCr422(image.row(y), isBGRA, frame.width,
                              {planeRow<std::uint16_t>(frame, 0, y), planeRow<std::uint16_t>(frame, 1, y),
                               planeRow<std::uint16_t>(frame, 2, y)});
        });
        return;
    }
    rows.run(frame.height / 2, [&](int begin, int end) {
        for (int pair = begin; pair < end; ++pair) fillPair(frame, image, order, pair, {0, frame.width});
    });
}

}
