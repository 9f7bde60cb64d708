#include <TavaroMedia/Frames/DevicePictures.h>

#include <TavaroMedia/FFmpeg/Private/Failures.h>
#include <TavaroMedia/FFmpeg/Private/Handles.h>
#include <TavaroMedia/Frames/Private/ColorKernels.h>
#include <TavaroMedia/Frames/Private/DecodedPicture.h>
#include <TavaroMedia/Frames/Private/EncoderPlanes.h>
#include <TavaroMedia/Frames/Private/PictureFormats.h>

#include <algorithm>
#include <cassert>
#include <cstring>
#include <new>
#include <vector>

namespace tavaro {

namespace {

bool is422(DeviceLayout layout) { return layout == DeviceLayout::yuyv || layout == DeviceLayout::uyvy; }
bool isRGB(DeviceLayout layout) { return layout == DeviceLayout::bgrx || layout == DeviceLayout::rgbx; }

/// Bytes of a row of the first plane that pixels are in.
std::ptrdiff_t rowBytes(DeviceFormat const& format) {
    std::ptrdiff_t const width = format.width;
    switch (format.layout) {
    case DeviceLayout::yuyv:
    case DeviceLayout::uyvy: return (width + 1) / 2 * 4;
    case DeviceLayout::bgrx:
    case DeviceLayout::rgbx: return width * 4;
    case DeviceLayout::nv12:
    case DeviceLayout::yuv420:
    case DeviceLayout::jpeg: break;
    }
    return width;
}

/// The least that a picture has; the last row of each plane may lack what lies between the rows.
std::size_t leastBytes(DeviceFormat const& format) {
    std::ptrdiff_t const chromaRows = (format.height + 1) / 2;
    std::ptrdiff_t const chromaWidth = (format.width + 1) / 2;
    auto const first = format.stride * (format.height - 1) + rowBytes(format);
    auto const plane = format.stride * format.height;
    switch (format.layout) {
    case DeviceLayout::nv12:
        return static_cast<std::size_t>(plane + format.stride * (chromaRows - 1) + 2 * chromaWidth);
    case DeviceLayout::yuv420:
        return static_cast<std::size_t>(plane + (format.stride + 1) / 2 * (2 * chromaRows - 1) + chromaWidth);
    case DeviceLayout::jpeg: return 1;
    default: return static_cast<std::size_t>(first);
    }
}

DeviceFormat withStride(DeviceFormat format) {
    if (format.stride < rowBytes(format)) format.stride = rowBytes(format);
    return format;
}

void average(std::uint8_t const* a, std::uint8_t const* b, int width, std::uint8_t* to) {
    for (int x = 0; x < width; ++x) to[x] = static_cast<std::uint8_t>((a[x] + b[x] + 1) / 2);
}

ffmpeg::Frame newFrame() {
    ffmpeg::Frame frame(av_frame_alloc());
    if (!frame) throw std::bad_alloc();
    return frame;
}

ffmpeg::CodecContext jpegDecoder() {
    ffmpeg::prepareLibraries();
    ffmpeg::CodecContext decoder(avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_MJPEG)));
    if (!decoder) throw std::bad_alloc();
    decoder->thread_count = 1;
    decoder->max_pixels = std::int64_t{1} << 27;
    decoder->err_recognition = AV_EF_EXPLODE; // or the rest of a damaged picture is grey
    if (avcodec_open2(decoder.get(), nullptr, nullptr) < 0) return nullptr;
    return decoder;
}

}

struct DevicePictures::State {
    DeviceFormat format; // with the stride of the present picture
    std::ptrdiff_t const usualStride;
    ffmpeg::CodecContext decoder; // of JPEGs; none where this FFmpeg has none
    ffmpeg::Packet packet{av_packet_alloc()};
    std::vector<std::uint8_t> planes; // Y, Cb, Cr of what comes in another layout
    DevicePixels pixels;

    explicit State(DeviceFormat const& format) : format(withStride(format)), usualStride(this->format.stride) {
        if (format.layout == DeviceLayout::jpeg) decoder = jpegDecoder();
        if (!packet) throw std::bad_alloc();
    }

    int chromaWidth() const { return (format.width + 1) / 2; }
    int chromaRows() const { return (format.height + 1) / 2; }
    ffmpeg::Frame decoded(std::span<std::uint8_t const> bytes);
    void simplify(AVFrame& frame);
    ffmpeg::Frame wrapped(std::span<std::uint8_t const> bytes);
    void separateChroma(std::uint8_t const* pairs, AVFrame& frame) const;
    DevicePicture handedOn(ffmpeg::Frame frame);
};

DevicePictures::DevicePictures(DeviceFormat const& format) : state_(std::make_unique<State>(format)) {}
DevicePictures::~DevicePictures() = default;

DeviceFormat const& DevicePictures::format() const { return state_->format; }

std::optional<DevicePicture> DevicePictures::read(std::span<std::uint8_t const> bytes, std::ptrdiff_t stride) {
    auto& s = *state_;
    auto const& format = s.format;
    s.format.stride = stride > 0 ? std::max(stride, rowBytes(format)) : s.usualStride;
    if (format.width <= 0 || format.height <= 0 || bytes.size() < leastBytes(format)) return std::nullopt;
    if (isRGB(format.layout))
        return PackedPixels{{bytes.data(), format.width, format.height, format.stride},
                            format.layout == DeviceLayout::bgrx ? PixelOrder::bgra : PixelOrder::rgba};
    if (is422(format.layout)) return Packed422{bytes.data(), format};
    auto frame = format.layout == DeviceLayout::jpeg ? s.decoded(bytes) : s.wrapped(bytes);
    if (!frame) return std::nullopt;
    return s.handedOn(std::move(frame));
}

/// None for what is damaged.
ffmpeg::Frame DevicePictures::State::decoded(std::span<std::uint8_t const> bytes) {
    if (!decoder || av_new_packet(packet.get(), static_cast<int>(bytes.size())) < 0) return nullptr;
    std::memcpy(packet->data, bytes.data(), bytes.size());
    int const sent = avcodec_send_packet(decoder.get(), packet.get());
    av_packet_unref(packet.get());
    auto frame = newFrame();
    bool const isGood = sent >= 0 && avcodec_receive_frame(decoder.get(), frame.get()) >= 0 &&
                        !(frame->flags & AV_FRAME_FLAG_CORRUPT) && frame->decode_error_flags == 0;
    if (!isGood) avcodec_flush_buffers(decoder.get());
    bool const fits = isGood && frame->width == format.width && frame->height == format.height;
    if (fits) simplify(*frame);
    return fits ? std::move(frame) : nullptr;
}

/// The usual JPEGs of cameras as the quick converter takes them: 4:2:2 as 4:2:0, and chroma as if it were sited left,
/// half a pixel beside where it may be.
void DevicePictures::State::simplify(AVFrame& frame) {
    bool const is422 = frame.format == AV_PIX_FMT_YUVJ422P || frame.format == AV_PIX_FMT_YUV422P;
    bool const is420 = frame.format == AV_PIX_FMT_YUVJ420P || frame.format == AV_PIX_FMT_YUV420P;
    if (!is422 && !is420) return;
    frame.chroma_location = AVCHROMA_LOC_LEFT;
    if (is420) return;
    planes.resize(2 * static_cast<std::size_t>(chromaWidth()) * static_cast<std::size_t>(chromaRows()));
    for (int plane = 1; plane < 3; ++plane) {
        auto* const to = planes.data() + std::ptrdiff_t{plane - 1} * chromaWidth() * chromaRows();
        for (int k = 0; k < chromaRows(); ++k) {
            auto const* const upper = frame.data[plane] + std::ptrdiff_t{2 * k} * frame.linesize[plane];
            auto const* const lower = 2 * k + 1 < format.height ? upper + frame.linesize[plane] : upper;
            average(upper, lower, chromaWidth(), to + std::ptrdiff_t{k} * chromaWidth());
        }
        frame.data[plane] = to;
        frame.linesize[plane] = chromaWidth();
    }
    if (frame.format == AV_PIX_FMT_YUVJ422P) frame.color_range = AVCOL_RANGE_JPEG; // as its name alone may say
    frame.format = AV_PIX_FMT_YUV420P;
}

namespace {

/// Without memory.
ffmpeg::Frame frame420(DeviceFormat const& format) {
    auto frame = newFrame();
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = format.width;
    frame->height = format.height;
    frame->color_range = format.range == DeviceRange::full ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    frame->colorspace = format.matrix == DeviceMatrix::bt709 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
    frame->chroma_location = AVCHROMA_LOC_LEFT;
    return frame;
}

void pointAt(AVFrame& frame, std::vector<std::uint8_t>& planes) {
    int const chromaWidth = (frame.width + 1) / 2, chromaRows = (frame.height + 1) / 2;
    auto const luma = static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height);
    auto const chroma = static_cast<std::size_t>(chromaWidth) * static_cast<std::size_t>(chromaRows);
    planes.resize(luma + 2 * chroma);
    frame.data[0] = planes.data();
    frame.data[1] = planes.data() + luma;
    frame.data[2] = frame.data[1] + chroma;
    frame.linesize[0] = frame.width;
    frame.linesize[1] = frame.linesize[2] = chromaWidth;
}

}

/// The device's own bytes as far as they lie as they should. The frame does not own them.
ffmpeg::Frame DevicePictures::State::wrapped(std::span<std::uint8_t const> bytes) {
    auto frame = frame420(format);
    auto* const first = const_cast<std::uint8_t*>(bytes.data()); // nobody writes to it
    auto const stride = static_cast<int>(format.stride);
    auto* const second = first + format.stride * format.height;
    if (format.layout == DeviceLayout::yuv420) {
        frame->data[1] = second;
        frame->data[2] = second + std::ptrdiff_t{(stride + 1) / 2} * chromaRows();
        frame->linesize[1] = frame->linesize[2] = (stride + 1) / 2;
    } else {
        pointAt(*frame, planes);
        separateChroma(second, *frame);
    }
    frame->data[0] = first;
    frame->linesize[0] = stride;
    return frame;
}

void DevicePictures::State::separateChroma(std::uint8_t const* pairs, AVFrame& frame) const {
    for (int y = 0; y < chromaRows(); ++y) {
        auto const* const row = pairs + y * format.stride;
        auto* const cb = frame.data[1] + std::ptrdiff_t{y} * chromaWidth();
        auto* const cr = frame.data[2] + std::ptrdiff_t{y} * chromaWidth();
        for (int x = 0; x < chromaWidth(); ++x) {
            cb[x] = row[2 * x];
            cr[x] = row[2 * x + 1];
        }
    }
}

namespace {

template<class Pixel> Pixel* rowOf(AVFrame const& frame, int plane, int y) {
    return frame.data[plane] + std::ptrdiff_t{y} * frame.linesize[plane];
}

/// Two rows of a picture, the last of which may be one row alone, and their chroma.
void takeApart(Packed422 const& from, int pair, RowPairYCbCr420 const& to) {
    auto const& format = from.format;
    auto const order = format.layout == DeviceLayout::yuyv ? Order422::lumaFirst : Order422::chromaFirst;
    int const lower = std::min(2 * pair + 1, format.height - 1);
    std::uint8_t const* const rows[] = {from.bytes + 2 * pair * format.stride, from.bytes + lower * format.stride};
    rowsFrom422(rows, order, format.width, to);
}

/// The frame does not own the memory.
ffmpeg::Frame takenApart(Packed422 const& from, std::vector<std::uint8_t>& planes) {
    auto frame = frame420(from.format);
    pointAt(*frame, planes);
    for (int pair = 0; pair < (frame->height + 1) / 2; ++pair) {
        int const lower = std::min(2 * pair + 1, frame->height - 1);
        takeApart(from, pair,
                  {{rowOf<std::uint8_t>(*frame, 0, 2 * pair), rowOf<std::uint8_t>(*frame, 0, lower)},
                   rowOf<std::uint8_t>(*frame, 1, pair),
                   rowOf<std::uint8_t>(*frame, 2, pair)});
    }
    return frame;
}

VideoFrame shown(ffmpeg::Frame frame) {
    auto const picture = std::make_shared<VideoFrame::Picture>();
    picture->uprightWidth = frame->width;
    picture->uprightHeight = frame->height;
    picture->frame = std::move(frame);
    return VideoFrame(picture);
}

}

/// What is no plain 4:2:0, as some JPEGs, becomes pixels at once.
DevicePicture DevicePictures::State::handedOn(ffmpeg::Frame frame) {
    auto const made = shown(std::move(frame));
    return isPlain420(made.picture()) ? DevicePicture(made) : pixels.of(made);
}

PackedPixels DevicePixels::of(DevicePicture const& picture) {
    if (auto const* const packed = std::get_if<PackedPixels>(&picture)) return *packed;
    auto const* const packed = std::get_if<Packed422>(&picture);
    converter_.convert(packed ? shown(takenApart(*packed, planes_)) : std::get<VideoFrame>(picture), image_);
    return {image_.view(), PixelOrder::rgba};
}

namespace {

RowPairYCbCr420 rowPair(AVFrame const& frame, int pair) {
    return {{rowOf<std::uint8_t>(frame, 0, 2 * pair), rowOf<std::uint8_t>(frame, 0, 2 * pair + 1)},
            rowOf<std::uint8_t>(frame, 1, pair),
            rowOf<std::uint8_t>(frame, 2, pair)};
}

void fillFrom(AVFrame& to, AVFrame const& from) {
    ToBT709 const matrix(lumaWeights(from), sampleRange(from));
    for (int pair = 0; pair < to.height / 2; ++pair) {
        auto const rows = rowPair(from, pair);
        rowsToBT709({{rows.luma[0], rows.luma[1]}, rows.cb, rows.cr}, to.width, matrix, rowPair(to, pair));
    }
}

/// Pair by pair, so that what is between the two steps stays near the processor.
void fillFrom(AVFrame& to, Packed422 const& from) {
    auto const described = frame420(from.format);
    ToBT709 const matrix(lumaWeights(*described), sampleRange(*described));
    auto const width = static_cast<std::size_t>(from.format.width), chroma = (width + 1) / 2;
    std::vector<std::uint8_t> rows(2 * width + 2 * chroma);
    RowPairYCbCr420 const between{
        {rows.data(), rows.data() + width}, rows.data() + 2 * width, rows.data() + 2 * width + chroma};
    for (int pair = 0; pair < to.height / 2; ++pair) {
        takeApart(from, pair, between);
        rowsToBT709({{between.luma[0], between.luma[1]}, between.cb, between.cr}, to.width, matrix, rowPair(to, pair));
    }
}

}

void fillPicture(EncoderPicture& picture, DevicePicture const& from) {
    auto& to = *picture.planes().frame;
    auto const* const frame = std::get_if<VideoFrame>(&from);
    auto const* const packed = std::get_if<Packed422>(&from);
    bool const isPlain = frame && isPlain420(frame->picture());
    if (to.format == AV_PIX_FMT_YUV420P && (isPlain || packed)) {
        assert(!packed || (packed->format.width >= to.width && packed->format.height >= to.height));
        assert(packed || (frame->width() >= to.width && frame->height() >= to.height));
        return packed ? fillFrom(to, *packed) : fillFrom(to, *frame->picture().frame);
    }
    DevicePixels converted;
    auto const pixels = converted.of(from);
    fillPicture(picture, pixels.view, pixels.order);
}

}
