#include <Tavaro/Model/Privacy/FindingPicture.h>

#include <TavaroCore/Project/DemoProject.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

using namespace tavaro;

namespace {

using Ink = std::array<std::uint8_t, 3>;

constexpr Ink green{0, 255, 0}, white{255, 255, 255};

/// Grey, and of that ink where the areas are, edges that only touch a pixel included.
Image screenWith(Size2 size, std::vector<NormalizedRect> const& secrets, Ink const& ink = green) {
    Image frame(static_cast<int>(size.width), static_cast<int>(size.height));
    for (int y = 0; y < frame.height(); ++y)
        for (int x = 0; x < frame.width(); ++x) {
            auto const isSecret = std::ranges::any_of(secrets, [&](NormalizedRect const& each) {
                return x + 1 > each.x * frame.width() && x < each.maxX() * frame.width() &&
                       y + 1 > each.y * frame.height() && y < each.maxY() * frame.height();
            });
            auto* const pixel = frame.row(y) + std::ptrdiff_t{4} * x;
            std::ranges::fill_n(pixel, 3, std::uint8_t{128});
            if (isSecret) std::ranges::copy(ink, pixel);
            pixel[3] = 255;
        }
    return frame;
}

int differentPixels(Image const& a, Image const& b) {
    int count = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            count += !std::equal(a.row(y) + std::ptrdiff_t{4} * x, a.row(y) + std::ptrdiff_t{4} * (x + 1),
                                 b.row(y) + std::ptrdiff_t{4} * x);
    return count;
}

RedactionTrack track(double start, double end, NormalizedRect const& area) {
    return {.start = start, .end = end, .keyframes = {{start, area}}};
}

}

TEST(FindingPicture, nothingOfWhatIsCoveredIsInItWhateverItsPlaceAndSize) {
    std::mt19937 random(7);
    auto const share = [&](double most) { return std::uniform_real_distribution<double>(0, most)(random); };
    for (int round = 0; round < 60; ++round) {
        NormalizedRect const area{share(1), share(1), share(0.5), share(0.2)};
        NormalizedRect const other{share(1), share(1), share(0.2), share(0.2)};
        auto const drawn = [&](Ink const& ink) {
            return findingPicture(screenWith({320, 200}, {area, other}, ink).view(), area, std::array{other}, {96, 54});
        };
        auto const picture = drawn(green);
        EXPECT_EQ(differentPixels(picture, drawn(white)), 0) << "round " << round;
        EXPECT_LE(picture.width(), 96);
        EXPECT_LE(picture.height(), 54);
    }
}

TEST(FindingPicture, showsWhatIsAroundInItsShape) {
    auto const frame = screenWith({1920, 1080}, {});
    auto const picture = findingPicture(frame.view(), {0.4, 0.5, 0.1, 0.02}, {}, {96, 54});
    EXPECT_EQ(picture.width(), 96);
    EXPECT_EQ(picture.height(), 54);
    EXPECT_EQ(picture.row(0)[0], 128) << "the surroundings are not covered";
    EXPECT_GT(picture.row(27)[4 * 48], picture.row(27)[4 * 48 + 1]) << "the middle is the finding";
    EXPECT_TRUE(findingPicture({}, {0, 0, 1, 1}, {}, {96, 54}).isEmpty());
    auto const narrow = findingPicture(screenWith({20, 400}, {}).view(), {0, 0, 1, 1}, {}, {96, 54});
    EXPECT_LT(narrow.width(), narrow.height()) << "it is not stretched";
}

TEST(FindingPicture, itsMomentIsInTheMiddleAndKnowsWhatElseIsHiddenThen) {
    DemoProject project;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 20}};
    NormalizedRect const here{0.1, 0.1, 0.2, 0.1}, there{0.5, 0.5, 0.2, 0.1};
    std::vector tracks{track(2, 6, here), track(3, 5, there), track(8, 9, there), track(0, 20, there)};
    tracks[3].asset = "other.mp4";
    tracks.push_back({.start = 1, .end = 2});
    project.redactions = tracks;
    auto const scene = sceneOf(project, tracks[0].id);
    ASSERT_TRUE(scene);
    EXPECT_EQ(*scene, (FindingScene{"screen.mp4", 4, here, {there}}));
    EXPECT_FALSE(sceneOf(project, tracks[4].id)) << "it is nowhere";
    EXPECT_FALSE(sceneOf(project, UUID::random()));
}
