#include <TavaroVision/Tracking/Private/ShiftSearch.h>
#include <TavaroVision/Tracking/Private/TextPatch.h>
#include <Tests/Vision/Drawing/DrawnScreen.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace tavaro {

namespace {

constexpr int width = 640, height = 400;
constexpr PixelBox place{40, 100, 300, 22};

/// A line of text there, and noise as codecs leave it.
struct NoisyPicture {
    std::vector<std::uint8_t> pixels;

    explicit NoisyPicture(std::string const& text, int x = place.x, int y = place.y, unsigned seed = 1, Ink ink = {}) {
        DrawnScreen screen(width, height);
        screen.fill({0, 0, width, height}, {250, 250, 250});
        screen.write("nothing of interest is here", 40, 20, {}, {});
        if (!text.empty()) screen.write(text, x, y, {}, ink);
        pixels = screen.gray();
        std::mt19937 random(seed);
        for (auto& pixel : pixels) {
            int const noise = static_cast<int>(random() % 9) - 4;
            pixel = static_cast<std::uint8_t>(std::clamp(pixel + noise, 0, 255));
        }
    }
    GrayView view() const { return {pixels.data(), width, height, width}; }
};

constexpr char key[] = "token = ghp_hT7sQx9Lm2Vb4";

TextPatch patchOf(NoisyPicture const& picture) { return {picture.view(), place, 10}; }

}

TEST(TextPatch, isKnownAgainInNoiseAndPaleButNotAsOtherText) {
    NoisyPicture const then(key);
    auto const patch = patchOf(then);
    auto const again = patch.presence(NoisyPicture(key, place.x, place.y, 2).view(), place.x, place.y);
    EXPECT_TRUE(again.isWhole);
    EXPECT_EQ(again.count, again.inked);
    NoisyPicture const pale(key, place.x, place.y, 3, {150, 150, 150});
    EXPECT_TRUE(patch.presence(pale.view(), place.x, place.y).isMost());
    EXPECT_FALSE(patch.presence(pale.view(), place.x, place.y).isWhole);
    NoisyPicture const other("Nothing that anybody hides", place.x, place.y, 4);
    EXPECT_FALSE(patch.presence(other.view(), place.x, place.y).isLegible());
    EXPECT_FALSE(patch.presence(NoisyPicture("").view(), place.x, place.y).isLegible());
}

TEST(TextPatch, oneStrokeOfOneLetterMakesAnother) {
    auto const patch = patchOf(NoisyPicture("lena.berg 4539 1488"));
    EXPECT_TRUE(patch.isSame(NoisyPicture("lena.berg 4539 1488", place.x, place.y, 2).view(), place.x, place.y));
    for (auto const* other :
         {"lena.borg 4539 1488", "lena.barg 4539 1488", "lena.berg 4589 1488", "lena.berg 4539 7488"})
        EXPECT_FALSE(patch.isSame(NoisyPicture(other, place.x, place.y, 2).view(), place.x, place.y)) << other;
}

TEST(TextPatch, isLegibleInPart) {
    NoisyPicture const then(key);
    auto const patch = patchOf(then);
    auto const part = patch.presence(NoisyPicture("token = ghp_", place.x, place.y, 2).view(), place.x, place.y);
    EXPECT_TRUE(part.isLegible());
    EXPECT_LT(part.count, part.inked);
    EXPECT_FALSE(part.isWhole);
    auto const more = patchOf(NoisyPicture("token = ghp_")).presence(then.view(), place.x, place.y);
    EXPECT_FALSE(more.isWhole) << "letters that came where there were none are a change";
}

TEST(TextPatch, partlyOutsideOfThePictureIsLookedAtWithoutItsOutside) {
    NoisyPicture const then(key);
    auto const patch = patchOf(then);
    EXPECT_FALSE(patch.presence(then.view(), -1000, place.y).isLegible());
    EXPECT_FALSE(patch.presence(then.view(), place.x, height + 5).isLegible());
    NoisyPicture const left(key, place.x - 100, place.y, 2);
    EXPECT_TRUE(patch.presence(left.view(), place.x - 100, place.y).isLegible());
}

TEST(TextPatch, isKnownByItsUpperPartAtAnEdgeThatCutsIt) {
    auto const patch = patchOf(NoisyPicture(key));
    auto const cutAt = [](int row) {
        NoisyPicture picture(key, place.x, place.y, 2);
        for (int y = place.y + row; y < height; ++y)
            for (int x = 0; x < width; ++x)
                picture.pixels[std::size_t(y * width + x)] = y < place.y + row + 3 ? 200 : 60;
        return picture;
    };
    EXPECT_TRUE(patch.presence(cutAt(10).view(), place.x, place.y).isMost());
    EXPECT_FALSE(patch.presence(cutAt(3).view(), place.x, place.y).isLegible()) << "only dots can be seen";
}

TEST(ShiftSearch, aPlaceAboveThatIsAlikeByChanceDoesNotEndIt) {
    auto const patch = patchOf(NoisyPicture(key));
    NoisyPicture now(key, place.x + 20, place.y + 9, 2);
    for (int y = 0; y < 60; ++y) // as bright as the slopes of letters are
        for (int x = 0; x < width; ++x) now.pixels[std::size_t(y * width + x)] = 128;
    EXPECT_EQ(shiftOf(patch, place.x, place.y, now.view()), (Shift{20, 9}));
}

TEST(ShiftSearch, findsScrolledAndDraggedTextToThePixel) {
    auto const patch = patchOf(NoisyPicture(key));
    unsigned seed = 10;
    for (Shift const shift : {Shift{0, 37}, {0, -63}, {0, 251}, {25, 14}, {-31, 0}, {120, -60}}) {
        NoisyPicture const now(key, place.x + shift.dx, place.y + shift.dy, seed++);
        EXPECT_EQ(shiftOf(patch, place.x, place.y, now.view()), shift) << shift.dx << "," << shift.dy;
    }
}

TEST(ShiftSearch, findsWhatSlidesFarAndIsCutByTheEdge) {
    auto const patch = patchOf(NoisyPicture(key));
    int const out = width - place.x - patch.width() / 2;
    for (int const dx : {180, out, -place.x - patch.width() / 3}) {
        NoisyPicture const now(key, place.x + dx, place.y, 3);
        EXPECT_EQ(shiftOf(patch, place.x, place.y, now.view()), (Shift{dx, 0}));
    }
}

TEST(ShiftSearch, findsNothingWhereTheTextIsGone) {
    auto const patch = patchOf(NoisyPicture(key));
    EXPECT_FALSE(shiftOf(patch, place.x, place.y, NoisyPicture("").view()));
    EXPECT_FALSE(shiftOf(patch, place.x, place.y, NoisyPicture("Some other words of this length").view()));
    EXPECT_FALSE(shiftOf(patchOf(NoisyPicture("")), place.x, place.y, NoisyPicture(key).view()));
}

}
