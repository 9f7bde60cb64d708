#include <TavaroRender/Sheet/ContactSheet.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>

namespace tavaro {

namespace {

constexpr std::array<Size2, 4> canvases{Size2{1920, 1080}, Size2{1080, 1920}, Size2{500, 500}, Size2{3840, 300}};

std::array<int, 3> pixel(Image const& image, std::int64_t x, std::int64_t y) {
    auto const* at = image.row(static_cast<int>(y)) + 4 * x;
    return {at[0], at[1], at[2]};
}

Image plain(Size2 size, std::array<std::uint8_t, 4> const& color) {
    Image image(static_cast<int>(size.width), static_cast<int>(size.height));
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) std::memcpy(image.row(y) + 4 * x, color.data(), 4);
    }
    return image;
}

TEST(SheetLayout, picturesKeepTheShapeOfTheCanvasAndNeverTouchOneAnotherOrTheEdges) {
    for (auto const canvas : canvases) {
        for (int const count : {1, 2, 3, 7, 12, 50, 400}) {
            for (std::int64_t const width : {64, 640, 1920, 8000}) {
                SCOPED_TRACE(testing::Message()
                             << canvas.width << "×" << canvas.height << " " << count << " " << width);
                auto const layout = sheetLayout(count, canvas, width);
                EXPECT_GE(layout.columns * layout.rows, count);
                EXPECT_LT(layout.columns * (layout.rows - 1), count) << "an empty row";
                EXPECT_NEAR(static_cast<double>(layout.picture.width) / canvas.aspect(),
                            static_cast<double>(layout.picture.height), 17);
                EXPECT_LE(layout.picture.width, canvas.width);
                EXPECT_EQ(layout.picture, layout.picture.evened());
                EXPECT_GT(layout.gap, 0);
                EXPECT_GT(layout.label, layout.labelSize);
                auto const last = layout.columns * layout.rows - 1;
                EXPECT_EQ(layout.pictureX(last) + layout.picture.width + layout.margin, layout.sheet.width);
                EXPECT_LE(layout.pictureY(last) + layout.picture.height + layout.margin, layout.sheet.height);
                auto const least = 2 * layout.margin + layout.columns * (96 + layout.gap); // of pictures one can see
                EXPECT_LE(layout.sheet.width, std::max<std::int64_t>(width, least));
            }
        }
    }
}

TEST(SheetLayout, theGridIsAboutAsManyPicturesWideAsHigh) {
    auto const grid = [](int count) {
        auto const layout = sheetLayout(count, {1920, 1080}, 1920);
        return std::pair{layout.columns, layout.rows};
    };
    EXPECT_EQ(grid(1), std::pair(1, 1));
    EXPECT_EQ(grid(2), std::pair(2, 1));
    EXPECT_EQ(grid(9), std::pair(3, 3));
    EXPECT_EQ(grid(12), std::pair(4, 3)) << "rather wide than high";
    EXPECT_EQ(grid(13), std::pair(4, 4)) << "rather some empty places than one long row";
}

TEST(SheetLayout, timesAreFramesOfTheFilmEvenlySpread) {
    auto const times = sheetTimes(7, 12.03, 30);
    ASSERT_EQ(times.size(), 7u);
    for (std::size_t i = 0; i < times.size(); ++i) {
        EXPECT_NEAR(times[i] * 30, std::round(times[i] * 30), 1e-9);
        EXPECT_NEAR(times[i], 12.03 * (static_cast<double>(i) + 0.5) / 7, 1 / 30.0);
        EXPECT_LT(times[i], 12.03);
    }
    EXPECT_EQ(sheetTimes(3, 0.01, 30), (std::vector<double>{0, 0, 0})) << "a film of one frame";
}

TEST(ContactSheet, everyPictureLiesInItsPlaceUnchangedAboveItsLabel) {
    auto const layout = sheetLayout(5, {640, 360}, 900);
    ContactSheet sheet(layout, "Tour \xFF of 日本 👋", "0:12.03");
    for (int i = 0; i < 5; ++i) {
        auto const shade = static_cast<std::uint8_t>(40 + 40 * i);
        sheet.add(plain(layout.picture, {shade, 90, 200, 255}).view(), "0:0" + std::to_string(i));
    }
    auto const image = sheet.finish();
    auto const background = pixel(*image, 2, 2);
    for (int i = 0; i < 5; ++i) {
        auto const x = layout.pictureX(i), y = layout.pictureY(i);
        EXPECT_EQ(pixel(*image, x + layout.picture.width / 2, y + layout.picture.height / 2),
                  (std::array{40 + 40 * i, 90, 200}));
        EXPECT_EQ(pixel(*image, x, y), background) << "round corners";
        int ink = 0;
        for (auto row = y + layout.picture.height; row < y + layout.picture.height + layout.label; ++row) {
            for (auto column = x; column < x + layout.picture.width; ++column)
                ink += pixel(*image, column, row) != background;
        }
        EXPECT_GT(ink, 50) << "a label";
    }
    auto const free = pixel(*image, layout.pictureX(5) + 20, layout.pictureY(5) + 20);
    EXPECT_EQ(free, background) << "the sixth place is empty";
    for (int x = 0; x < image->width(); ++x) ASSERT_EQ(image->row(image->height() - 1)[4 * x + 3], 255);
}

TEST(ContactSheet, whatIsTransparentInAPictureShowsAPlainGround) {
    auto const layout = sheetLayout(1, {320, 180}, 640);
    ContactSheet sheet(layout, "", "");
    sheet.add(plain(layout.picture, {255, 0, 0, 0}).view(), "");
    auto const image = sheet.finish();
    auto const ground = pixel(*image, layout.pictureX(0) + 50, layout.pictureY(0) + 50);
    EXPECT_LT(ground[0], 80);
    EXPECT_NE(ground, pixel(*image, 2, 2));
}

}

}
