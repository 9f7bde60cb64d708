#include <TavaroMedia/Frames/PNG.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <new>
#include <span>
#include <utility>
#include <vector>

#include <png.h>
#include <zlib.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroMedia/FFmpeg/Private/Failures.h>

namespace tavaro {

namespace {

using Kind = MediaError::Kind;

// Past this, a picture's header is taken for a forgery (a PNG of a few bytes can ask for gigabytes).
constexpr std::int64_t largestPicture = std::int64_t{1} << 28;
constexpr std::uint64_t largestFile = std::uint64_t{1} << 30; // what such a picture takes unpacked

// Screen pictures are large flat areas: the fast levels pack them nearly as well as the slow ones.
constexpr int compressionLevel = 4;

struct Writer {
    png_structp png = nullptr;
    png_infop info = nullptr;
    std::function<int(std::span<std::byte const>)> output; // 0, or the error number; throws nothing
    int failure = 0;

    explicit Writer(std::function<int(std::span<std::byte const>)> output) : output(std::move(output)) {}
    Writer(Writer const&) = delete;
    Writer& operator=(Writer const&) = delete;
    ~Writer() { png_destroy_write_struct(&png, &info); }
};

// libpng leaves by longjmp, over frames of C alone: nothing with a destructor may stand in the functions below that it
// passes through.
void writeBytes(png_structp png, png_bytep bytes, png_size_t count) {
    auto& writer = *static_cast<Writer*>(png_get_io_ptr(png));
    writer.failure = writer.output(std::as_bytes(std::span(bytes, count)));
    if (writer.failure != 0) png_error(png, "write failed");
}

// libpng would print these; the caller's sentence says it.
[[noreturn]] void leave(png_structp png, png_const_charp) { png_longjmp(png, 1); }
void ignore(png_structp, png_const_charp) {}

bool isOpaque(ImageView image) {
    for (int y = 0; y < image.height; ++y) {
        auto const* row = image.row(y);
        for (int x = 0; x < image.width; ++x)
            if (row[4 * x + 3] != 255) return false;
    }
    return true;
}

void dropAlpha(std::uint8_t* to, std::uint8_t const* from, int width) {
    for (int x = 0; x < width; ++x, to += 3, from += 4) std::memcpy(to, from, 3);
}

/// One filter for all rows, and no search for repeats beyond runs: noise, of which a dithered background is full, has
/// none to find.
void packQuickly(png_structp png) {
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_PAETH);
    png_set_compression_strategy(png, Z_RLE);
}

bool encode(Writer& writer, ImageView image, std::uint8_t* opaqueRow, PNGPacking packing) {
    writer.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, leave, ignore);
    if (writer.png) writer.info = png_create_info_struct(writer.png);
    if (!writer.info) return false;
    if (setjmp(png_jmpbuf(writer.png))) return false;
    png_set_write_fn(writer.png, &writer, writeBytes, nullptr);
    png_set_compression_level(writer.png, compressionLevel);
    if (packing == PNGPacking::quick) packQuickly(writer.png);
    png_set_user_limits(writer.png, 0x7fffffff, 0x7fffffff);
    png_set_IHDR(writer.png, writer.info, static_cast<png_uint_32>(image.width), static_cast<png_uint_32>(image.height),
                 8, opaqueRow ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_RGB_ALPHA, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_sRGB(writer.png, writer.info, PNG_sRGB_INTENT_PERCEPTUAL);
    png_write_info(writer.png, writer.info);
    for (int y = 0; y < image.height; ++y) {
        if (opaqueRow) dropAlpha(opaqueRow, image.row(y), image.width);
        png_write_row(writer.png, opaqueRow ? opaqueRow : image.row(y));
    }
    png_write_end(writer.png, writer.info);
    return true;
}

bool encode(Writer& writer, ImageView image, PNGPacking packing) {
    std::vector<std::uint8_t> opaqueRow(isOpaque(image) ? static_cast<std::size_t>(image.width) * 3 : 0);
    return encode(writer, image, opaqueRow.empty() ? nullptr : opaqueRow.data(), packing);
}

struct Reader {
    png_image image = {};
    Reader() { image.version = PNG_IMAGE_VERSION; }
    Reader(Reader const&) = delete;
    Reader& operator=(Reader const&) = delete;
    ~Reader() { png_image_free(&image); }
};

}

void writePNG(std::filesystem::path const& file, ImageView image, PNGPacking packing, PendingFile::IfTaken ifTaken) {
    if (image.isEmpty()) ffmpeg::throwWriting(file, Kind::refused, "the picture is empty");
    auto output = ffmpeg::writing(file, [&] { return PendingFile(file); });
    Writer writer([&](std::span<std::byte const> bytes) { return output.write(bytes); });
    if (!encode(writer, image, packing)) {
        if (writer.failure != 0) ffmpeg::throwWriting(file, -writer.failure);
        ffmpeg::throwWriting(file, Kind::refused, "the picture could not be encoded");
    }
    ffmpeg::writing(file, [&] { output.commit(ifTaken); });
}

std::string encodePNG(ImageView image, PNGPacking packing) {
    std::string file;
    Writer writer([&](std::span<std::byte const> bytes) {
        try {
            file.append(reinterpret_cast<char const*>(bytes.data()), bytes.size());
            return 0;
        } catch (std::bad_alloc const&) {
            return ENOMEM;
        }
    });
    if (image.isEmpty() || !encode(writer, image, packing))
        throw MediaError(Kind::refused, "PNG encoding failed.", "the picture could not be encoded");
    return file;
}

Image readPNG(std::filesystem::path const& file) {
    auto const bytes = ffmpeg::reading(file, [&] { return readWholeFile(file, largestFile); });
    if (!bytes) ffmpeg::throwReading(file, -ENOENT);
    Reader reader;
    if (!png_image_begin_read_from_memory(&reader.image, bytes->data(), bytes->size()))
        ffmpeg::throwReading(file, Kind::unreadable, "it is damaged, or not a PNG picture");
    if (std::int64_t{reader.image.width} * reader.image.height > largestPicture)
        ffmpeg::throwReading(file, Kind::unreadable, "it has more pixels than a picture here may have");
    reader.image.format = PNG_FORMAT_RGBA;
    Image image(static_cast<int>(reader.image.width), static_cast<int>(reader.image.height));
    if (!png_image_finish_read(&reader.image, nullptr, image.row(0), static_cast<png_int_32>(image.stride()), nullptr))
        ffmpeg::throwReading(file, Kind::unreadable, "it is damaged, or not a PNG picture");
    return image;
}

}
