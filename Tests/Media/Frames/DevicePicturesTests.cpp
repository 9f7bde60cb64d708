#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <TavaroMedia/Frames/DevicePictures.h>
#include <TavaroMedia/Frames/PNG.h>
#include <TavaroMedia/Frames/Private/DecodedPicture.h>
#include <TavaroMedia/Frames/Private/EncoderPlanes.h>
#include <Tests/Capture/TemporaryFolder.h>
#include <Tests/Media/Frames/SoftImage.h>
#include <Tests/Media/Movie/NumberedMovie.h>

namespace tavaro {
namespace {

constexpr int width = 318; // some chroma samples stand for a column that is not there
constexpr int height = 178;

/// Mean over the colours, in levels.
double difference(ImageView a, PackedPixels const& b) {
    int const red = b.order == PixelOrder::bgra ? 2 : 0;
    double sum = 0;
    for (int y = 0; y < std::min(a.height, b.view.height); ++y) {
        for (int x = 0; x < std::min(a.width, b.view.width); ++x) {
            auto const* const p = a.row(y) + 4 * x;
            auto const* const q = b.view.row(y) + 4 * x;
            sum += std::abs(p[0] - q[red]) + std::abs(p[1] - q[1]) + std::abs(p[2] - q[2 - red]);
        }
    }
    return sum / (3.0 * a.width * a.height);
}

double difference(ImageView a, DevicePicture const& b) { return difference(a, DevicePixels().of(b)); }

/// As a film shows the picture.
double differenceInFilm(ImageView a, DevicePicture const& b, AVPixelFormat format) {
    EncoderPicturePool pool(a.width & ~1, a.height & ~1, format);
    auto filled = pool.take();
    fillPicture(filled, b);
    auto const picture = std::make_shared<VideoFrame::Picture>();
    picture->frame = std::move(filled.planes().frame);
    picture->uprightWidth = a.width & ~1;
    picture->uprightHeight = a.height & ~1;
    return difference(a, VideoFrame(picture));
}

/// The soft picture as a device would hand it over; FFmpeg's program converts it.
class DevicePicturesTest : public testing::Test {
protected:
    DevicePicturesTest() { writePNG(folder_.path() / "soft.png", soft.view()); }

    std::vector<std::uint8_t> bytes(std::string const& arguments) const {
        auto const file = folder_.path() / "picture";
        if (!runFFmpeg("-i '" + (folder_.path() / "soft.png").string() + "' " + arguments + " '" + file.string() + "'"))
            return {};
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    Image const soft = softImage(width, height);

private:
    TemporaryFolder folder_;
};

}

TEST_F(DevicePicturesTest, aPictureLooksTheSameInEveryLayoutAndIsRefusedOnlyWhereItIsShort) {
    struct Case {
        DeviceLayout layout;
        char const* format;
        double tolerance;
        char const* colors = "out_color_matrix=bt601";
        DeviceMatrix matrix = DeviceMatrix::bt601;
        DeviceRange range = DeviceRange::limited;
    };
    constexpr auto full = "out_color_matrix=bt601:out_range=full";
    constexpr Case cases[] = {
        {DeviceLayout::yuyv, "yuyv422", 1},
        {DeviceLayout::uyvy, "uyvy422", 1},
        {DeviceLayout::nv12, "nv12", 1},
        {DeviceLayout::yuv420, "yuv420p", 1},
        {DeviceLayout::bgrx, "bgr0", 0},
        {DeviceLayout::rgbx, "rgb0", 0},
        {DeviceLayout::yuyv, "yuyv422", 1, "out_color_matrix=bt709", DeviceMatrix::bt709},
        {DeviceLayout::nv12, "nv12", 1, full, DeviceMatrix::bt601, DeviceRange::full},
    };
    if (bytes("-f rawvideo -pix_fmt nv12").empty()) GTEST_SKIP() << "no ffmpeg program";
    for (auto const& wanted : cases) {
        auto const whole = bytes(std::string("-vf scale=") + wanted.colors + " -f rawvideo -pix_fmt " + wanted.format);
        DevicePictures pictures({wanted.layout, width, height, 0, wanted.matrix, wanted.range});
        auto const picture = pictures.read(whole);
        ASSERT_TRUE(picture) << wanted.format;
        EXPECT_LE(difference(soft.view(), *picture), wanted.tolerance) << wanted.format << wanted.colors;
        DevicePixels pixels;
        double const throughPixels = differenceInFilm(soft.view(), pixels.of(*picture), AV_PIX_FMT_YUV420P);
        for (auto const film : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P10})
            EXPECT_LE(differenceInFilm(soft.view(), *picture, film), throughPixels + 0.1) << wanted.format << film;
        EXPECT_FALSE(pictures.read(std::span(whole).first(whole.size() - 1))) << wanted.format;
        EXPECT_FALSE(pictures.read({})) << wanted.format;
    }
}

TEST_F(DevicePicturesTest, rowsMayBeFartherApartThanTheirPixelsNeed) {
    auto const packed = bytes("-vf scale=out_color_matrix=bt601 -f rawvideo -pix_fmt yuyv422");
    if (packed.empty()) GTEST_SKIP() << "no ffmpeg program";
    constexpr std::size_t row = 2 * width, stride = row + 20;
    std::vector<std::uint8_t> apart(stride * (height - 1) + row, 77);
    for (std::size_t y = 0; y < height; ++y) std::memcpy(apart.data() + y * stride, packed.data() + y * row, row);
    DevicePictures pictures({DeviceLayout::yuyv, width, height, stride});
    auto const picture = pictures.read(apart);
    ASSERT_TRUE(picture);
    EXPECT_LE(difference(soft.view(), *picture), 1);
    DevicePictures others({DeviceLayout::yuyv, width, height});
    for (auto const& [bytes, told] : {std::pair(apart, stride), std::pair(packed, std::size_t{0})}) {
        auto const same = others.read(bytes, static_cast<std::ptrdiff_t>(told));
        ASSERT_TRUE(same) << told;
        EXPECT_LE(difference(soft.view(), *same), 1) << told;
    }
}

TEST_F(DevicePicturesTest, aJPEGIsTakenWholeOrNotAtAll) {
    for (std::string const format : {"yuvj422p", "yuvj420p"}) {
        auto const whole = bytes("-f mjpeg -q:v 2 -pix_fmt " + format);
        if (whole.empty()) GTEST_SKIP() << "no ffmpeg program";
        DevicePictures pictures({DeviceLayout::jpeg, width, height});
        auto const isGood = [&](std::vector<std::uint8_t> const& bytes) {
            auto const picture = pictures.read(bytes);
            return picture && difference(soft.view(), *picture) < 3 &&
                   differenceInFilm(soft.view(), *picture, AV_PIX_FMT_YUV420P) < 3;
        };
        EXPECT_TRUE(isGood(whole)) << format;
        for (std::size_t const percent : {1, 10, 50, 90, 97}) {
            EXPECT_FALSE(pictures.read(std::span(whole).first(whole.size() * percent / 100))) << format << percent;
            EXPECT_TRUE(isGood(whole)) << "after a damaged one";
        }
        auto padded = whole;
        padded.resize(padded.size() + 4096); // as some cameras do
        EXPECT_TRUE(isGood(padded)) << format;
        EXPECT_FALSE(DevicePictures({DeviceLayout::jpeg, width + 2, height}).read(whole)) << "of another size";
        EXPECT_FALSE(pictures.read(std::vector<std::uint8_t>(5000, 0))) << "nothing but zeros";
    }
}

}
