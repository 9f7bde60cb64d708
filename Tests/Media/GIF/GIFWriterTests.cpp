#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include <gmock/gmock.h>

#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Frames/PNG.h>
#include <TavaroMedia/GIF/GIFWriter.h>
#include <Tests/Capture/TemporaryFolder.h>
#include <Tests/Media/Files/FullDisk.h>
#include <Tests/Media/Movie/NumberedMovie.h>

namespace tavaro {
namespace {

using Kind = MediaError::Kind;
using testing::HasSubstr;

constexpr int width = 320;
constexpr int height = 180;
constexpr int rate = 15;

void append(PictureSink& sink, Image const& image, double time) {
    auto picture = sink.picture();
    fillPicture(picture, image.view());
    sink.append(std::move(picture), time);
}

GIFPalette paletteOf(std::vector<Image> const& images) {
    GIFPaletteMaker maker(images.front().width(), images.front().height());
    for (auto const& image : images) append(maker, image, 0);
    return maker.palette();
}

void writeGIF(std::filesystem::path const& file, std::vector<Image> const& images) {
    GIFWriter writer(file, images.front().width(), images.front().height(), paletteOf(images));
    for (std::size_t n = 0; n < images.size(); ++n) append(writer, images[n], static_cast<double>(n) / rate);
    writer.finish(static_cast<double>(images.size()) / rate);
}

std::vector<Image> numberedImages(int count) {
    std::vector<Image> images;
    for (int n = 0; n < count; ++n) images.push_back(numberedImage(width, height, n));
    return images;
}

/// An opaque square, another place in every picture, on nothing.
Image squareOnNothing(int number) {
    Image image(width, height);
    for (int y = 60; y < 100; ++y) {
        for (int x = 20 + 30 * number; x < 60 + 30 * number; ++x) {
            std::array<std::uint8_t, 4> const color{250, static_cast<std::uint8_t>(2 * y), 40, 255};
            std::memcpy(image.row(y) + 4 * x, color.data(), 4);
        }
    }
    return image;
}

/// Hundredths of a second that each stored picture is shown for, from the file's own control blocks.
std::vector<int> delays(std::string const& bytes) {
    std::vector<int> found;
    std::string const mark("\x21\xF9\x04", 3);
    for (auto at = bytes.find(mark); at != std::string::npos; at = bytes.find(mark, at + 8)) {
        if (bytes[at + 7] != 0) continue; // chance bytes of a picture
        found.push_back(static_cast<unsigned char>(bytes[at + 4]) | static_cast<unsigned char>(bytes[at + 5]) << 8);
    }
    return found;
}

TEST(GIFWriter, everyPictureIsShownForItsTimeAndTheWholeLastsExactly) {
    TemporaryFolder folder;
    auto const file = folder.path() / "film.gif";
    writeGIF(file, numberedImages(31)); // 2.0667 seconds
    auto const times = delays(bytesOf(file));
    ASSERT_EQ(times.size(), 31u);
    int end = 0;
    for (std::size_t n = 0; n < times.size(); ++n) {
        end += times[n];
        EXPECT_EQ(end, std::lround((n + 1) * 100.0 / rate)) << n;
    }
    MovieReader reader(file);
    for (int n = 0; n < 31; ++n) EXPECT_EQ(numberAt(reader, (n + 0.5) / rate), n);
}

TEST(GIFWriter, itPlaysForEver) {
    TemporaryFolder folder;
    auto const file = folder.path() / "film.gif";
    writeGIF(file, numberedImages(2));
    EXPECT_THAT(bytesOf(file), HasSubstr(std::string("NETSCAPE2.0\x03\x01\x00\x00\x00", 16)));
}

TEST(GIFWriter, aPictureLikeTheOneBeforeOnlyLastsLonger) {
    TemporaryFolder folder;
    std::vector<Image> images;
    for (int n = 0; n < 60; ++n) images.push_back(numberedImage(width, height, n < 40 ? 1 : 2));
    writeGIF(folder.path() / "rest.gif", images);
    EXPECT_THAT(delays(bytesOf(folder.path() / "rest.gif")), testing::ElementsAre(267, 133));
}

TEST(GIFWriter, aPictureAtRestForTwentyMinutesKeepsItsTime) {
    TemporaryFolder folder;
    auto const image = numberedImage(width, height, 5);
    std::vector<Image> one;
    one.push_back(image.copy());
    GIFWriter writer(folder.path() / "long.gif", width, height, paletteOf(one));
    for (int second = 0; second < 1200; ++second) append(writer, image, second);
    writer.finish(1200);
    int sum = 0;
    for (auto const delay : delays(bytesOf(folder.path() / "long.gif"))) sum += delay;
    EXPECT_EQ(sum, 120'000);
}

TEST(GIFWriter, fewColoursComeBackAsTheyWere) {
    TemporaryFolder folder;
    Image image(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::array<std::uint8_t, 4> const color{static_cast<std::uint8_t>(17 * (x / 20)),
                                                    static_cast<std::uint8_t>(25 * (y / 18)), 90, 255};
            std::memcpy(image.row(y) + 4 * x, color.data(), 4);
        }
    } // 160 colours
    std::vector<Image> images;
    images.push_back(image.copy());
    writeGIF(folder.path() / "flat.gif", images);
    if (!runFFmpeg("-y -v error -i " + (folder.path() / "flat.gif").string() + " " +
                   (folder.path() / "flat.png").string()))
        GTEST_SKIP() << "no ffmpeg program";
    auto const decoded = readPNG(folder.path() / "flat.png");
    for (int y = 0; y < height; ++y) ASSERT_EQ(std::memcmp(decoded.row(y), image.row(y), 4 * width), 0) << "row " << y;
}

/// Tiles of more colours than a GIF has.
Image tiles() {
    Image image(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            auto const tile = static_cast<unsigned>(y / 12 * 27 + x / 12);
            std::array<std::uint8_t, 4> const color{static_cast<std::uint8_t>(tile * 37),
                                                    static_cast<std::uint8_t>(tile * 91),
                                                    static_cast<std::uint8_t>(tile * 151), 255};
            std::memcpy(image.row(y) + 4 * x, color.data(), 4);
        }
    }
    return image;
}

/// Soft shades of far more colours than a GIF has, that wander with the number.
Image shades(int number) {
    Image image(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            auto const wave = 60 * std::sin((x + 4 * number) / 70.0) + 60 * std::cos((y - 3 * number) / 50.0);
            std::array<std::uint8_t, 4> const color{static_cast<std::uint8_t>(x * 200 / width + 20),
                                                    static_cast<std::uint8_t>(y + 40),
                                                    static_cast<std::uint8_t>(125 + wave), 255};
            std::memcpy(image.row(y) + 4 * x, color.data(), 4);
        }
    }
    return image;
}

/// The only picture of a GIF, as a player shows it; empty without an ffmpeg program.
Image shown(std::filesystem::path const& gif) {
    auto const png = gif.string() + ".png";
    if (!runFFmpeg("-i '" + gif.string() + "' '" + png + "'")) return {};
    return readPNG(png);
}

TEST(GIFWriter, anAreaOfOneColourStaysOneColour) {
    TemporaryFolder folder;
    std::vector<Image> images;
    images.push_back(tiles());
    writeGIF(folder.path() / "tiles.gif", images);
    auto const decoded = shown(folder.path() / "tiles.gif");
    if (decoded.isEmpty()) GTEST_SKIP() << "no ffmpeg program";
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            ASSERT_EQ(std::memcmp(decoded.row(y) + 4 * x, decoded.row(y / 12 * 12) + 4 * (x / 12 * 12), 4), 0)
                << x << ", " << y;
    }
}

struct GIFQuality {
    double psnr = 0;
    double ssim = 0;
    std::uintmax_t bytes = 0;
};

/// The mean of what FFmpeg's filter said of each picture.
double meanOf(std::filesystem::path const& log, std::string const& label) {
    auto const text = bytesOf(log);
    double sum = 0;
    int count = 0;
    for (auto at = text.find(label); at != std::string::npos; at = text.find(label, at + 1), ++count)
        sum += std::atof(text.c_str() + at + label.size());
    return count > 0 ? sum / count : 0;
}

GIFQuality qualityOf(std::filesystem::path const& gif, std::filesystem::path const& pictures) {
    auto const log = [&](char const* name) { return (gif.parent_path() / name).string(); };
    EXPECT_TRUE(runFFmpeg("-i '" + gif.string() + "' -i '" + pictures.string() +
                          "' -lavfi '[0]fps=15,format=gbrp,split[a][b];"
                          "[1]format=gbrp,split[c][d];[a][c]psnr=shortest=1:stats_file=" +
                          log("psnr") + ",nullsink;[b][d]ssim=shortest=1:stats_file=" + log("ssim") + "' -f null -"));
    return {meanOf(log("psnr"), "psnr_avg:"), meanOf(log("ssim"), "All:"), std::filesystem::file_size(gif)};
}

TEST(GIFWriter, itIsAsGoodAsFFmpegsFiltersAtNoMoreBytes) {
    TemporaryFolder folder;
    for (auto const isPage : {true, false}) {
        std::vector<Image> images;
        for (int n = 0; n < 12; ++n) {
            images.push_back(isPage ? numberedImage(width, height, n) : shades(n));
            writePNG(folder.path() / ("drawn-" + std::to_string(n) + ".png"), images.back().view());
        }
        auto const pictures = folder.path() / "drawn-%d.png";
        auto const gif = folder.path() / "film.gif";
        writeGIF(gif, images);
        for (std::string const dither : {"sierra2_4a", "bayer:bayer_scale=5"}) {
            auto const theirs = folder.path() / "theirs.gif";
            if (!runFFmpeg("-r 15 -i '" + pictures.string() +
                           "' -lavfi 'split[a][b];[a]palettegen[p];[b][p]paletteuse="
                           "diff_mode=rectangle:dither=" +
                           dither + "' '" + theirs.string() + "'"))
                GTEST_SKIP() << "no ffmpeg program";
            auto const ours = qualityOf(gif, pictures);
            auto const other = qualityOf(theirs, pictures);
            SCOPED_TRACE((isPage ? "a page beside " : "shades beside ") + dither);
            EXPECT_GE(ours.psnr, other.psnr);
            EXPECT_GE(ours.ssim, other.ssim - 0.002);
            EXPECT_LE(ours.bytes, other.bytes);
        }
    }
}

TEST(GIFWriter, whatIsTransparentStaysSoWhereSomethingWasBefore) {
    TemporaryFolder folder;
    std::vector<Image> images;
    for (int n = 0; n < 5; ++n) images.push_back(squareOnNothing(n));
    writeGIF(folder.path() / "clear.gif", images);
    if (!runFFmpeg("-y -v error -i " + (folder.path() / "clear.gif").string() + " -pix_fmt rgba " +
                   (folder.path() / "clear-%d.png").string()))
        GTEST_SKIP() << "no ffmpeg program";
    for (int n = 0; n < 5; ++n) {
        auto const decoded = readPNG(folder.path() / ("clear-" + std::to_string(n + 1) + ".png"));
        auto const expected = images[static_cast<std::size_t>(n)].view();
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x)
                ASSERT_EQ(decoded.row(y)[4 * x + 3], expected.row(y)[4 * x + 3]) << n << ": " << x << ", " << y;
        }
    }
}

TEST(GIFWriter, nothingIsLeftOfAGIFThatFailsOrIsNotFinished) {
    TemporaryFolder folder;
    auto const file = folder.path() / "film.gif";
    auto const images = numberedImages(40);
    auto const palette = paletteOf(images);
    {
        GIFWriter writer(file, width, height, palette);
        append(writer, images[0], 0);
        EXPECT_THROW(append(writer, images[1], 0.001), MediaError) << "less than a hundredth of a second later";
        EXPECT_THROW(append(writer, images[1], std::nan("")), MediaError);
    }
    EXPECT_EQ(filesIn(folder.path()), 0);
    try {
        FullDisk const full(20'000);
        writeGIF(file, images);
        ADD_FAILURE() << "the GIF was written";
    } catch (MediaError const& error) {
        EXPECT_EQ(error.kind(), Kind::diskFull) << error.what();
    }
    EXPECT_THROW(GIFWriter(file, width, height, palette).finish(1), MediaError) << "without a picture";
    EXPECT_THROW(GIFWriter(file, 70'000, height, palette), MediaError);
    EXPECT_EQ(filesIn(folder.path()), 0);
}

}
}
