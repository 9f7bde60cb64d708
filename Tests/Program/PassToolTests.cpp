#include "ProcessFixture.h"

#include <TavaroMedia/Frames/PNG.h>

#include <gmock/gmock.h>

#include <cstdlib>

using namespace tavaro;
using ::testing::HasSubstr;

namespace {

class PassTool : public ProcessFixture {
protected:
    PassTool() {
        Image screen(64, 36);
        for (int y = 0; y < 36; ++y) {
            for (int x = 0; x < 64; ++x) {
                auto* pixel = screen.row(y) + 4 * x;
                pixel[0] = static_cast<std::uint8_t>(x * 4);
                pixel[1] = static_cast<std::uint8_t>(y * 7);
                pixel[2] = static_cast<std::uint8_t>((x ^ y) * 3);
                pixel[3] = 255;
            }
        }
        writePNG(path("screen.png"), screen.view());
    }

    Outcome pass(Arguments const& arguments) { return start(TAVARO_PASS, arguments).wait(); }
    void expectFailure(Arguments const& arguments, std::string const& sentence) {
        auto const outcome = pass(arguments);
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_THAT(outcome.error, HasSubstr(sentence));
    }
    static int largestDifference(Image const& a, Image const& b) {
        EXPECT_EQ(a.width(), b.width());
        EXPECT_EQ(a.height(), b.height());
        int largest = 0;
        for (int y = 0; y < a.height(); ++y) {
            for (int i = 0; i < a.width() * 4; ++i) largest = std::max(largest, std::abs(a.row(y)[i] - b.row(y)[i]));
        }
        return largest;
    }
};

}

TEST_F(PassTool, bothBackEndsDrawTheSamePictureFromOneFile) {
    write("u.json", R"({"bgColor0":[0.2,0.4,0.6,1],"canvasSize":[80,50],"contentOrigin":[8,7],"contentSize":[64,36],
        "clipOrigin":[8,7],"clipSize":[64,36],"cornerRadius":6,"cropSize":[1,1],"zoomScale":1.3,"sharpen":0.5})");
    for (std::string const backend : {"reference", "cpu"}) {
        auto const outcome = pass({"composite", path("u.json"), "--in", "screen=" + path("screen.png"), "-o",
                                   path(backend + ".png"), "--backend", backend});
        ASSERT_EQ(outcome.exitCode, 0) << outcome.error;
    }
    auto const reference = readPNG(path("reference.png"));
    EXPECT_EQ(reference.width(), 80);
    EXPECT_EQ(reference.height(), 50);
    EXPECT_EQ(std::vector<int>(reference.row(0), reference.row(0) + 4), (std::vector<int>{51, 102, 153, 255}));
    EXPECT_LE(largestDifference(reference, readPNG(path("cpu.png"))), 1);
}

TEST_F(PassTool, thePointerIsDrawnOverTheCanvasThatIsGiven) {
    write(
        "u.json",
        R"({"canvasSize":[64,36],"position":[20,10],"cursorSize":16,"opacity":1,"fillColor":[1,0,0,1],"strokeColor":[0,0,0,0]})");
    ASSERT_EQ(
        pass({"cursorOverlay", path("u.json"), "--in", "canvas=" + path("screen.png"), "-o", path("o.png")}).exitCode,
        0);
    auto const before = readPNG(path("screen.png")), after = readPNG(path("o.png"));
    EXPECT_EQ(after.row(17)[4 * 22], 255); // inside the arrow
    EXPECT_EQ(after.row(17)[4 * 22 + 1], 0);
    EXPECT_TRUE(std::equal(before.row(0), before.row(0) + 4 * 64, after.row(0)));
}

TEST_F(PassTool, whatItCannotRunIsExplained) {
    write("u.json", R"({"canvasSize":[64]})");
    write("huge.json", R"({"canvasSize":[1e9,10]})");
    write("type.json", R"({"canvasSize":[8,8],"bgMode":"mesh"})");
    std::string const screen = "screen=" + path("screen.png");
    expectFailure({"blur", path("u.json"), "-o", path("o.png")}, "composite, cursorOverlay");
    expectFailure({"composite", path("u.json"), "--in", screen, "-o", path("o.png")},
                  "canvasSize: expected 2 numbers, found 1");
    expectFailure({"composite", path("type.json"), "--in", screen, "-o", path("o.png")},
                  "bgMode: expected a number, found a string");
    expectFailure({"composite", path("huge.json"), "--in", screen, "-o", path("o.png")}, "canvasSize");
    expectFailure({"composite", path("u.json"), "--in", "canvas=" + path("screen.png"), "-o", path("o.png")},
                  "no input of composite");
    expectFailure({"composite", path("absent.json"), "--in", screen, "-o", path("o.png")}, "no such file");
    expectFailure({"composite", path("u.json"), "--in", "screen=" + path("absent.png"), "-o", path("o.png")},
                  "absent.png");
    write("u.json", R"({"canvasSize":[8,8]})");
    expectFailure({"composite", path("u.json"), "-o", path("o.png")}, "--in screen=FILE.png");
    EXPECT_EQ(pass({"composite"}).exitCode, 2);
}
