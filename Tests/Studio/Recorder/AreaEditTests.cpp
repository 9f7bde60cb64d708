#include <Tavaro/Studio/Recorder/AreaEdit.h>

#include <TavaroCore/Records/Fields.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <ostream>
#include <random>

using namespace tavaro;

namespace tavaro {

std::ostream& operator<<(std::ostream& out, PixelRect const& rect) {
    return out << rect.x << "," << rect.y << " " << rect.width << "x" << rect.height;
}

}

namespace {

constexpr PixelRect display{1920, 0, 1280, 720};
constexpr std::array shapes{AreaShape::free,   AreaShape::wide,     AreaShape::tall,
                            AreaShape::square, AreaShape::portrait, AreaShape::standard};

double ratioOf(AreaShape shape) {
    int width = 0, height = 0;
    auto const name = std::string(nameOf(shape));
    return std::sscanf(name.c_str(), "%d:%d", &width, &height) == 2 ? static_cast<double>(width) / height : 0;
}

void expectAllowed(PixelRect const& area, AreaShape shape) {
    EXPECT_GE(area.x, 0);
    EXPECT_GE(area.y, 0);
    EXPECT_LE(area.x + area.width, display.width);
    EXPECT_LE(area.y + area.height, display.height);
    EXPECT_GE(std::min(area.width, area.height), shortestAreaSide);
    if (double const ratio = ratioOf(shape); ratio > 0) {
        EXPECT_NEAR(area.width, area.height * ratio, 0.5 + 0.51 * ratio) << nameOf(shape);
    }
}

}

TEST(AreaEdit, whateverIsDraggedStaysOnTheDisplayAndKeepsItsShape) {
    std::mt19937 random(7);
    auto const anywhere = [&] { return std::uniform_int_distribution(-3000, 3000)(random); };
    for (auto const shape : shapes) {
        AreaEdit const edit(display, shape);
        auto area = edit.suggested();
        expectAllowed(area, shape);
        for (int i = 0; i < 2000 && !testing::Test::HasFailure(); ++i) {
            SCOPED_TRACE(testing::Message() << nameOf(shape) << " " << area);
            auto const grip = static_cast<AreaGrip>(std::uniform_int_distribution(0, 8)(random));
            switch (i % 5) {
            case 0: area = edit.drawn({anywhere(), anywhere()}, {anywhere(), anywhere()}); break;
            case 1: area = edit.withWidth(area, anywhere()); break;
            case 2: area = edit.withHeight(area, anywhere()); break;
            case 3: area = edit.fitted({anywhere(), anywhere(), anywhere(), anywhere()}); break;
            default: area = edit.dragged(area, grip, {anywhere() / 10, anywhere() / 10}); break;
            }
            expectAllowed(area, shape);
        }
    }
}

TEST(AreaEdit, theCornerOppositeToTheDraggedOneStays) {
    PixelRect const start{400, 200, 320, 180};
    AreaEdit const free(display, AreaShape::free), wide(display, AreaShape::wide);
    EXPECT_EQ(free.dragged(start, AreaGrip::topLeft, {-10, 20}), (PixelRect{390, 220, 330, 160}));
    EXPECT_EQ(wide.dragged(start, AreaGrip::topLeft, {-160, 0}), (PixelRect{240, 110, 480, 270}));
    EXPECT_EQ(wide.dragged(start, AreaGrip::right, {160, 999}), (PixelRect{400, 155, 480, 270}));
    EXPECT_EQ(free.dragged(start, AreaGrip::inside, {5000, -5000}), (PixelRect{960, 0, 320, 180}));
    EXPECT_EQ(free.dragged(start, AreaGrip::bottomRight, {5000, 5000}), (PixelRect{400, 200, 880, 520}));
}

TEST(AreaEdit, aNumberThatIsTypedCountsAndTheOtherSideFollows) {
    PixelRect const start{400, 200, 320, 180};
    EXPECT_EQ(AreaEdit(display, AreaShape::free).withWidth(start, 500), (PixelRect{400, 200, 500, 180}));
    EXPECT_EQ(AreaEdit(display, AreaShape::square).withHeight(start, 300), (PixelRect{400, 200, 300, 300}));
    EXPECT_EQ(AreaEdit(display, AreaShape::wide).fitted({400, 200, 1600, 1}), (PixelRect{400, 200, 880, 495}));
}
