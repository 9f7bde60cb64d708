#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <TavaroMedia/Frames/FrameConverter.h>
#include <TavaroMedia/Frames/PNG.h>
#include <TavaroPlatform/Queues/RowPool.h>
#include <Tests/Capture/TemporaryFolder.h>
#include <Tests/Media/Frames/SoftImage.h>
#include <Tests/Media/Movie/NumberedMovie.h>

namespace tavaro {
namespace {

double meanDifference(ImageView a, ImageView b) {
    double sum = 0;
    for (int y = 0; y < a.height; ++y)
        for (int x = 0; x < 4 * a.width; ++x) sum += std::abs(a.row(y)[x] - b.row(y)[x]);
    return sum / (4.0 * a.width * a.height);
}

// A movie of that picture, stored as it is in a pixel format; the FFmpeg program converts it.
bool storeRaw(std::filesystem::path const& png, std::filesystem::path const& movie, std::string const& arguments) {
    return runFFmpeg("-i '" + png.string() + "' " + arguments + " '" + movie.string() + "'");
}

// 318 is no multiple of four: some chroma samples stand for a column that is not there.
TEST(FrameConverter, everyPixelFormatShowsTheSamePicture) {
    struct Format {
        char const* name;
        double tolerance; // mean, in levels
    };
    constexpr Format formats[] = {
        {"yuv420p", 1}, {"nv12", 1},        {"yuv422p", 1},     {"yuv444p", 1},  {"yuv410p", 2},
        {"yuyv422", 1}, {"yuv422p10le", 1}, {"yuv420p12be", 1}, {"rgb24", 0},    {"bgra", 0},
        {"gbrp", 0},    {"gbrp10le", 0.5},  {"rgb48be", 0.5},   {"rgb565le", 3}, {"pal8", 16},
    };
    TemporaryFolder folder;
    auto const png = folder.path() / "soft.png";
    auto const soft = softImage(318, 178);
    writePNG(png, soft.view());
    if (!storeRaw(png, folder.path() / "try.nut", "-c:v rawvideo")) GTEST_SKIP() << "no ffmpeg program";
    FrameConverter converter;
    Image image;
    for (auto const& [name, tolerance] : formats) {
        auto const movie = folder.path() / (std::string(name) + ".nut");
        auto const scale = " -vf scale=out_color_matrix=bt601:flags=accurate_rnd+full_chroma_int+bicubic";
        ASSERT_TRUE(storeRaw(png, movie, std::string("-c:v rawvideo -pix_fmt ") + name + scale)) << name;
        MovieReader reader(movie);
        converter.convert(reader.frame(0), image);
        EXPECT_LE(meanDifference(image.view(), soft.view()), tolerance) << name;
    }
}

TEST(FrameConverter, theMatrixAndRangeOfTheTagsAreFollowed) {
    TemporaryFolder folder;
    auto const png = folder.path() / "soft.png";
    auto const soft = softImage(320, 180);
    writePNG(png, soft.view());
    if (!storeRaw(png, folder.path() / "try.nut", "-c:v rawvideo")) GTEST_SKIP() << "no ffmpeg program";
    FrameConverter converter;
    Image image;
    for (std::string const format : {"yuv420p", "yuv444p"}) {
        for (std::string const matrix : {"bt601", "bt709", "bt2020"}) {
            for (std::string const range : {"tv", "pc"}) {
                auto const tag = matrix == "bt601" ? "smpte170m" : matrix == "bt2020" ? "bt2020nc" : matrix;
                auto const movie = folder.path() / (format + matrix + range + ".mp4");
                ASSERT_TRUE(storeRaw(png, movie,
                                     "-vf scale=out_color_matrix=" + matrix + ":out_range=" + range + ",format=" +
                                         format + " -c:v libx264 -qp 1 -colorspace " + tag + " -color_range " + range));
                MovieReader reader(movie);
                converter.convert(reader.frame(0), image);
                EXPECT_LE(meanDifference(image.view(), soft.view()), 1.0) << movie.filename();
            }
        }
    }
}

TEST(FrameConverter, pixelsThatAreNotSquareAreMadeSquare) {
    TemporaryFolder folder;
    auto const png = folder.path() / "soft.png";
    auto const soft = softImage(320, 180);
    writePNG(png, soft.view());
    auto const movie = folder.path() / "narrow.mp4";
    if (!storeRaw(png, movie, "-vf scale=160:180,setsar=2/1 -c:v libx264 -qp 1")) GTEST_SKIP() << "no ffmpeg program";
    MovieReader reader(movie);
    EXPECT_EQ(reader.info().width, 320);
    EXPECT_EQ(reader.info().height, 180);
    FrameConverter converter;
    Image image;
    converter.convert(reader.frame(0), image);
    ASSERT_EQ(image.width(), 320);
    EXPECT_LE(meanDifference(image.view(), soft.view()), 2.0);
}

TEST(FrameConverter, bandsOnThreadsDrawWhatOneBandDraws) {
    TemporaryFolder folder;
    auto const file = folder.path() / "movie.mov";
    auto settings = smallMovie();
    settings.width = 330;
    settings.height = 190;
    settings.container = MovieContainer::mov;
    auto const image = softImage(331, 191); // the odd column and row find no place
    RowPool shared(3);
    for (auto const codec : {MovieCodec::h264, MovieCodec::proRes422}) {
        settings.codec = codec;
        MovieWriter writer(file, settings);
        auto whole = writer.picture();
        fillPicture(whole, image.view());
        auto parts = writer.picture();
        fillPicture(parts, image.view(), PixelOrder::rgba, shared);
        writer.append(std::move(whole), 0);
        writer.append(std::move(parts), 1);
        writer.finish();
        MovieReader reader(file);
        FrameConverter converter;
        Image first, second, again;
        converter.convert(reader.frame(0), first);
        converter.convert(reader.frame(1), second);
        EXPECT_LE(meanDifference(first.view(), second.view()), 0.6);
        converter.convert(reader.frame(1), again, shared);
        EXPECT_EQ(meanDifference(second.view(), again.view()), 0);
    }
}

}
}
