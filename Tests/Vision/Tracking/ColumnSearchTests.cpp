#include <TavaroVision/Tracking/Private/ColumnSearch.h>
#include <TavaroVision/Tracking/Private/TextPatch.h>
#include <Tests/Vision/Drawing/DrawnScreen.h>

#include <gtest/gtest.h>

namespace tavaro {

namespace {

constexpr int width = 640, height = 400;
constexpr char key[] = "token = ghp_hT7sQx9Lm2Vb4";

struct Page {
    std::vector<std::uint8_t> pixels;

    /// The key there, and another line where the key was.
    Page(int x, int y, PixelBox const& hidden = {}) {
        DrawnScreen screen(width, height);
        screen.fill({0, 0, width, height}, {30, 32, 40});
        screen.write("nothing that anybody hides", 40, 60, {}, {220, 220, 220});
        screen.write(key, x, y, {}, {220, 220, 220});
        screen.fill(hidden, {90, 20, 20});
        pixels = screen.gray();
    }
    GrayView view() const { return {pixels.data(), width, height, width}; }
};

std::vector<int> found(Page const& page, int x, char isNew = 1) {
    TextPatch const patch(Page(40, 100).view(), {40, 100, 300, 22}, 10);
    std::vector<char> const rows(height, isNew);
    std::vector<int> all;
    ColumnSearch(patch).find(page.view(), x, rows, [&](int y) {
        if (patch.presence(page.view(), x, y).isLegible()) all.push_back(y);
    });
    return all;
}

}

TEST(ColumnSearch, knowsATextAgainHoweverHighItIs) {
    for (int const y : {0, 130, 377}) EXPECT_EQ(found(Page(40, y), 40), std::vector{y});
    EXPECT_TRUE(found(Page(40, 130), 40, 0).empty()) << "only where the rows are new";
    EXPECT_TRUE(found(Page(340, 130), 40).empty()) << "it is in other columns";
}

TEST(ColumnSearch, knowsATextByAPartOfIt) {
    EXPECT_EQ(found(Page(40, 130, {100, 100, 300, 100}), 40), std::vector{130}) << "its beginning is seen";
    EXPECT_EQ(found(Page(40, 130, {0, 100, 180, 100}), 40), std::vector{130}) << "its end is seen";
    EXPECT_EQ(found(Page(-60, 130), -60), std::vector{130}) << "its beginning is left of the picture";
    EXPECT_TRUE(found(Page(40, 130, {0, 100, 640, 100}), 40).empty());
}

}
