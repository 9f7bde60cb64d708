#include <TavaroMedia/Frames/Private/PictureFormats.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include <zimg.h>

#include <TavaroMedia/Errors/MediaError.h>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace tavaro {

namespace {

constexpr std::size_t planeAlignment = 64; // zimg's demand

[[noreturn]] void refuse(AVPixFmtDescriptor const* format) {
    auto const detail = "its pixel format '" + std::string(format ? format->name : "unknown") + "' is not known here";
    throw MediaError(MediaError::Kind::unsupported, "Could not show the movie's picture: " + detail + ".", detail);
}

struct FreeMemory {
    void operator()(void* memory) const { ::operator delete(memory, std::align_val_t(planeAlignment)); }
};

/// One component of a picture, in rows that zimg takes.
struct Plane {
    std::unique_ptr<std::uint8_t, FreeMemory> memory;
    std::ptrdiff_t stride = 0;
    int width = 0;
    int height = 0;

    Plane() = default;
    Plane(int width, int height, int bytes) : width(width), height(height) {
        auto const rowBytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(bytes);
        stride = static_cast<std::ptrdiff_t>((rowBytes + planeAlignment - 1) / planeAlignment * planeAlignment);
        auto const size = static_cast<std::size_t>(stride) * static_cast<std::size_t>(height);
        memory.reset(static_cast<std::uint8_t*>(::operator new(size, std::align_val_t(planeAlignment))));
    }
    std::uint8_t* row(int y) const { return memory.get() + y * stride; }
};

bool isRGB(AVPixFmtDescriptor const& format) {
    return (format.flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
}
bool isGrey(AVPixFmtDescriptor const& format) { return !isRGB(format) && format.nb_components < 3; }

// What two pictures must have in common to go through one graph.
struct Shape {
    int width, height, uprightWidth, uprightHeight;
    int format, matrix, location;
    SampleRange range;
    bool operator==(Shape const&) const = default;
};

Shape shapeOf(VideoFrame::Picture const& picture) {
    auto const& frame = *picture.frame;
    return {frame.width,
            frame.height,
            picture.uprightWidth,
            picture.uprightHeight,
            frame.format,
            static_cast<int>(frame.colorspace),
            static_cast<int>(frame.chroma_location),
            sampleRange(frame)};
}

zimg_chroma_location_e chromaLocation(AVFrame const& frame) {
    switch (frame.chroma_location) {
    case AVCHROMA_LOC_CENTER: return ZIMG_CHROMA_CENTER;
    case AVCHROMA_LOC_TOPLEFT: return ZIMG_CHROMA_TOP_LEFT;
    case AVCHROMA_LOC_TOP: return ZIMG_CHROMA_TOP;
    case AVCHROMA_LOC_BOTTOMLEFT: return ZIMG_CHROMA_BOTTOM_LEFT;
    case AVCHROMA_LOC_BOTTOM: return ZIMG_CHROMA_BOTTOM;
    default: return ZIMG_CHROMA_LEFT;
    }
}

zimg_matrix_coefficients_e matrixOf(AVFrame const& frame) {
    switch (frame.colorspace) {
    case AVCOL_SPC_BT709: return ZIMG_MATRIX_BT709;
    case AVCOL_SPC_FCC: return ZIMG_MATRIX_FCC;
    case AVCOL_SPC_BT470BG: return ZIMG_MATRIX_BT470_BG;
    case AVCOL_SPC_SMPTE170M: return ZIMG_MATRIX_ST170_M;
    case AVCOL_SPC_SMPTE240M: return ZIMG_MATRIX_ST240_M;
    case AVCOL_SPC_YCGCO: return ZIMG_MATRIX_YCGCO;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL: return ZIMG_MATRIX_BT2020_NCL;
    default: return frame.height >= 720 ? ZIMG_MATRIX_BT709 : ZIMG_MATRIX_ST170_M;
    }
}

}

LumaWeights lumaWeights(AVFrame const& frame) {
    switch (matrixOf(frame)) {
    case ZIMG_MATRIX_FCC: return {0.30, 0.11};
    case ZIMG_MATRIX_BT470_BG:
    case ZIMG_MATRIX_ST170_M: return {0.299, 0.114};
    case ZIMG_MATRIX_ST240_M: return {0.212, 0.087};
    case ZIMG_MATRIX_BT2020_NCL: return {0.2627, 0.0593};
    default: return {0.2126, 0.0722};
    }
}

SampleRange sampleRange(AVFrame const& frame) {
    switch (frame.format) {
    case AV_PIX_FMT_YUVJ420P:
    case AV_PIX_FMT_YUVJ422P:
    case AV_PIX_FMT_YUVJ444P:
    case AV_PIX_FMT_YUVJ440P:
    case AV_PIX_FMT_YUVJ411P: return SampleRange::full;
    default: break;
    }
    if (frame.color_range == AVCOL_RANGE_JPEG) return SampleRange::full;
    if (frame.color_range == AVCOL_RANGE_MPEG) return SampleRange::limited;
    auto const* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    return format && (isRGB(*format) || isGrey(*format)) ? SampleRange::full : SampleRange::limited;
}

bool isPlain420(VideoFrame::Picture const& picture) {
    auto const& frame = *picture.frame;
    auto const isSquare = picture.uprightWidth == frame.width && picture.uprightHeight == frame.height;
    auto const isLeft = frame.chroma_location == AVCHROMA_LOC_UNSPECIFIED || frame.chroma_location == AVCHROMA_LOC_LEFT;
    auto const is420 = frame.format == AV_PIX_FMT_YUV420P || frame.format == AV_PIX_FMT_YUVJ420P;
    return is420 && isSquare && isLeft && picture.turn.isNone() && frame.colorspace != AVCOL_SPC_YCGCO;
}

struct GeneralConversion::Graph {
    struct FreeGraph {
        void operator()(zimg_filter_graph* graph) const { zimg_filter_graph_free(graph); }
    };

    Shape shape;
    AVPixFmtDescriptor const& format;
    int depth = 8;
    bool isPlanar = false; // each component a plane of whole samples, to be copied; else taken apart sample by sample
    std::array<Plane, 3> source;
    std::array<Plane, 3> target;
    Plane temporary;
    std::unique_ptr<zimg_filter_graph, FreeGraph> graph;

    Graph(VideoFrame::Picture const& picture, AVPixFmtDescriptor const& format)
        : shape(shapeOf(picture))
        , format(format)
        , depth(format.flags & AV_PIX_FMT_FLAG_PAL ? 8 : format.comp[0].depth) {
        auto const unreadable =
            AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_BAYER | AV_PIX_FMT_FLAG_FLOAT;
        if ((format.flags & unreadable) || depth > 16 || format.log2_chroma_w > 2 || format.log2_chroma_h > 2)
            refuse(&format);
        for (int c = 1; c < std::min<int>(format.nb_components, 3); ++c)
            if (!isGrey(format) && format.comp[c].depth != depth) depth = std::max(depth, format.comp[c].depth);
        isPlanar = isCopyable();
        makePlanes();
        makeGraph(*picture.frame);
    }

    int count() const { return isGrey(format) ? 1 : 3; }
    int bytes() const { return isPlanar && depth <= 8 ? 1 : 2; }

    bool isCopyable() const {
        if (format.flags & (AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BE)) return false;
        for (int c = 0; c < count(); ++c) {
            auto const& component = format.comp[c];
            auto const sampleBytes = depth <= 8 ? 1 : 2;
            if (component.step != sampleBytes || component.offset || component.shift || component.depth != depth)
                return false;
        }
        return true;
    }

    bool isSubsampled(int component) const { return !isRGB(format) && component > 0; }

    int samples(int component, int side, int log2) const { return isSubsampled(component) ? -(-side >> log2) : side; }

    // zimg wants whole chroma samples, so an odd picture goes in with its last column and row repeated, and is cropped.
    int padded(int side, int log2) const { return isSubsampled(1) ? -(-side >> log2) << log2 : side; }
    int paddedWidth() const { return padded(shape.width, format.log2_chroma_w); }
    int paddedHeight() const { return padded(shape.height, format.log2_chroma_h); }

    void makePlanes() {
        for (int c = 0; c < count(); ++c)
            source[c] = Plane(samples(c, paddedWidth(), format.log2_chroma_w),
                              samples(c, paddedHeight(), format.log2_chroma_h), bytes());
        for (auto& plane : target) plane = Plane(shape.uprightWidth, shape.uprightHeight, 1);
    }

    void makeGraph(AVFrame const& frame) {
        zimg_image_format from;
        zimg_image_format to;
        zimg_image_format_default(&from, ZIMG_API_VERSION);
        zimg_image_format_default(&to, ZIMG_API_VERSION);
        from.width = static_cast<unsigned>(paddedWidth());
        from.height = static_cast<unsigned>(paddedHeight());
        from.active_region = {0, 0, static_cast<double>(shape.width), static_cast<double>(shape.height)};
        from.pixel_type = bytes() == 1 ? ZIMG_PIXEL_BYTE : ZIMG_PIXEL_WORD;
        from.depth = static_cast<unsigned>(depth);
        from.pixel_range = shape.range == SampleRange::full ? ZIMG_RANGE_FULL : ZIMG_RANGE_LIMITED;
        // A grey picture goes in as three equal components.
        auto const hasChroma = !isRGB(format) && !isGrey(format);
        from.color_family = hasChroma ? ZIMG_COLOR_YUV : ZIMG_COLOR_RGB;
        from.matrix_coefficients = hasChroma ? matrixOf(frame) : ZIMG_MATRIX_RGB;
        if (hasChroma) {
            from.subsample_w = format.log2_chroma_w;
            from.subsample_h = format.log2_chroma_h;
            from.chroma_location = chromaLocation(frame);
        }
        to.width = static_cast<unsigned>(shape.uprightWidth);
        to.height = static_cast<unsigned>(shape.uprightHeight);
        to.pixel_type = ZIMG_PIXEL_BYTE;
        to.depth = 8;
        to.pixel_range = ZIMG_RANGE_FULL;
        to.color_family = ZIMG_COLOR_RGB;
        to.matrix_coefficients = ZIMG_MATRIX_RGB;
        zimg_graph_builder_params parameters;
        zimg_graph_builder_params_default(&parameters, ZIMG_API_VERSION);
        parameters.resample_filter_uv = ZIMG_RESIZE_BILINEAR;
        parameters.cpu_type = ZIMG_CPU_AUTO_64B;
        graph.reset(zimg_filter_graph_build(&from, &to, &parameters));
        std::size_t size = 0;
        if (!graph || zimg_filter_graph_get_tmp_size(graph.get(), &size) != ZIMG_ERROR_SUCCESS) refuse(&format);
        temporary = Plane(static_cast<int>(std::max<std::size_t>(size, 1)), 1, 1);
    }

    void load(AVFrame const& frame) {
        for (int c = 0; c < count(); ++c) {
            auto const& plane = source[c];
            auto const width = samples(c, shape.width, format.log2_chroma_w);
            auto const height = samples(c, shape.height, format.log2_chroma_h);
            for (int y = 0; y < height; ++y) {
                loadRow(frame, c, y, width);
                for (int x = width; x < plane.width; ++x)
                    std::memcpy(plane.row(y) + x * bytes(), plane.row(y) + (width - 1) * bytes(),
                                static_cast<std::size_t>(bytes()));
            }
            for (int y = height; y < plane.height; ++y)
                std::memcpy(plane.row(y), plane.row(height - 1), static_cast<std::size_t>(plane.stride));
        }
    }

    void loadRow(AVFrame const& frame, int c, int y, int width) const {
        if (format.flags & AV_PIX_FMT_FLAG_PAL) return loadIndexedRow(frame, c, y, width);
        auto const& component = format.comp[c];
        auto* const row = source[c].row(y);
        if (isPlanar) {
            auto const* data = frame.data[component.plane] + std::ptrdiff_t{y} * frame.linesize[component.plane];
            std::memcpy(row, data, static_cast<std::size_t>(width) * static_cast<std::size_t>(bytes()));
            return;
        }
        av_read_image_line2(row, const_cast<std::uint8_t const**>(frame.data), frame.linesize, &format, 0, y, c, width,
                            0, 2);
        if (component.depth < depth) widen(row, width, component.depth);
    }

    // A palette has 256 words of alpha, red, green and blue, from the highest byte down.
    void loadIndexedRow(AVFrame const& frame, int c, int y, int width) const {
        auto const* indices = frame.data[0] + std::ptrdiff_t{y} * frame.linesize[0];
        auto const* palette = reinterpret_cast<std::uint32_t const*>(frame.data[1]);
        auto* const samples = reinterpret_cast<std::uint16_t*>(source[c].row(y));
        for (int x = 0; x < width; ++x) samples[x] = palette[indices[x]] >> (16 - 8 * c) & 0xFF;
    }

    // Components of fewer bits than the widest (5-6-5) are widened by repeating their upper bits.
    void widen(std::uint8_t* row, int width, int from) const {
        auto* const samples = reinterpret_cast<std::uint16_t*>(row);
        auto const missing = depth - from;
        for (int x = 0; x < width; ++x)
            samples[x] = static_cast<std::uint16_t>(samples[x] << missing | samples[x] >> std::max(0, from - missing));
    }

    void run() {
        zimg_image_buffer_const from = {};
        zimg_image_buffer to = {};
        from.version = to.version = ZIMG_API_VERSION;
        for (int c = 0; c < 3; ++c) {
            auto const& plane = source[count() == 1 ? 0 : c];
            from.plane[c] = {plane.memory.get(), plane.stride, ZIMG_BUFFER_MAX};
            to.plane[c] = {target[c].memory.get(), target[c].stride, ZIMG_BUFFER_MAX};
        }
        auto const code = zimg_filter_graph_process(graph.get(), &from, &to, temporary.memory.get(), nullptr, nullptr,
                                                    nullptr, nullptr);
        if (code != ZIMG_ERROR_SUCCESS) refuse(&format);
    }

    void store(PictureTurn turn, MutableImageView to) const {
        // Where the stored origin comes to lie, and how far one stored pixel to the right moves in the picture shown.
        auto const x0 = turn.xx < 0 || turn.xy < 0 ? to.width - 1 : 0;
        auto const y0 = turn.yx < 0 || turn.yy < 0 ? to.height - 1 : 0;
        auto const step = 4 * turn.xx + turn.yx * to.stride;
        for (int y = 0; y < shape.uprightHeight; ++y) {
            auto* pixel = to.row(y0 + turn.yy * y) + std::ptrdiff_t{4} * (x0 + turn.xy * y);
            auto const *red = target[0].row(y), *green = target[1].row(y), *blue = target[2].row(y);
            for (int x = 0; x < shape.uprightWidth; ++x, pixel += step) {
                std::uint8_t const rgba[4] = {red[x], green[x], blue[x], 255};
                std::memcpy(pixel, rgba, 4);
            }
        }
    }
};

GeneralConversion::GeneralConversion() = default;
GeneralConversion::~GeneralConversion() = default;

void GeneralConversion::convert(VideoFrame::Picture const& picture, MutableImageView to) {
    auto const* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.frame->format));
    if (!format) refuse(nullptr);
    if (!graph_ || !(graph_->shape == shapeOf(picture))) graph_ = std::make_unique<Graph>(picture, *format);
    graph_->load(*picture.frame);
    graph_->run();
    graph_->store(picture.turn, to);
}

}
