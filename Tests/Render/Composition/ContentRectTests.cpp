#include <TavaroCore/Style/ScreenStyle.h>
#include <TavaroRender/Composition/Private/ContentRect.h>

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace tavaro {

namespace {

constexpr Size2 hd{1920, 1080};

void expectNear(CanvasRect const& rect, CanvasRect const& expected) {
    EXPECT_NEAR(rect.x, expected.x, 1e-9);
    EXPECT_NEAR(rect.y, expected.y, 1e-9);
    EXPECT_NEAR(rect.width, expected.width, 1e-9);
    EXPECT_NEAR(rect.height, expected.height, 1e-9);
}

TEST(ContentRect, fitShowsTheWholeRecordingCentredInThePaddedCanvas) {
    expectNear(contentRect(hd, hd, ContentFit::fit, {}, 0.1), {192, 108, 1536, 864});
    expectNear(contentRect({1000, 1000}, hd, ContentFit::fit, {}, 0), {420, 0, 1080, 1080});
}

TEST(ContentRect, stretchTakesTheRoomWhateverTheShape) {
    expectNear(contentRect({10, 1000}, hd, ContentFit::stretch, {}, 0.25), {480, 270, 960, 540});
}

TEST(ContentRect, fillKeepsTheEdgeThatTheFocusNames) {
    Size2 const vertical{1080, 1920};
    double const width = 1920.0 * 1920 / 1080;
    expectNear(contentRect(hd, vertical, ContentFit::fill, {0, 0}, 0), {0, 0, width, 1920});
    expectNear(contentRect(hd, vertical, ContentFit::fill, {1, 1}, 0), {1080 - width, 0, width, 1920});
    expectNear(contentRect(hd, vertical, ContentFit::fill, {-7, 0}, 0), {0, 0, width, 1920});
    expectNear(contentRect(hd, vertical, ContentFit::fill, {7, 0}, 0), {1080 - width, 0, width, 1920});
}

TEST(ContentRect, fillScalesAndFocusesOnThePaddedCanvas) {
    // The padded canvas is 864 × 1536; the recording fills its height and overflows it only in width.
    double const width = 1536.0 * 1920 / 1080;
    expectNear(contentRect(hd, {1080, 1920}, ContentFit::fill, {0, 0}, 0.1), {108, 192, width, 1536});
    expectNear(contentRect(hd, {1080, 1920}, ContentFit::fill, {1, 1}, 0.1), {972 - width, 192, width, 1536});
}

TEST(ContentRect, nothingIsDrawnOfASourceWithoutSizeOrACanvasWithoutRoom) {
    for (auto const fit : {ContentFit::fit, ContentFit::fill, ContentFit::stretch}) {
        EXPECT_TRUE(contentRect({0, 1080}, hd, fit, {}, 0).isEmpty());
        EXPECT_TRUE(contentRect({1920, 0}, hd, fit, {}, 0).isEmpty());
        EXPECT_TRUE(contentRect(hd, hd, fit, {}, 0.5).isEmpty());
        EXPECT_TRUE(contentRect(hd, {0, 0}, fit, {}, 0).isEmpty());
        EXPECT_EQ(singlePane({0, 0}, hd, {.frame = DeviceFrame::imac}, fit, {}), SinglePane{});
    }
}

TEST(SinglePane, everyDeviceFrameStaysInThePaddedCanvasAndKeepsTheRecordingsShape) {
    for (std::size_t index = 0; index < namesOf(DeviceFrame{}).size(); ++index) {
        for (Size2 const source : {hd, Size2{400, 900}, Size2{3000, 200}, Size2{1, 1}}) {
            for (Size2 const canvas : {hd, Size2{1080, 1920}, Size2{640, 360}}) {
                for (double const padding : {0.0, 0.06, 0.3}) {
                    auto const frame = static_cast<DeviceFrame>(index);
                    SCOPED_TRACE(namesOf(frame)[index]);
                    auto const pane =
                        singlePane(source, canvas, {.padding = padding, .frame = frame}, ContentFit::fit, {});
                    double const slack = 1e-6;
                    auto const w = static_cast<double>(canvas.width);
                    auto const h = static_cast<double>(canvas.height);
                    EXPECT_GE(pane.clip.x, padding * w - slack);
                    EXPECT_GE(pane.clip.y, padding * h - slack);
                    EXPECT_LE(pane.clip.maxX(), (1 - padding) * w + slack);
                    EXPECT_LE(pane.clip.maxY(), (1 - padding) * h + slack);
                    EXPECT_NEAR(pane.clip.center().x, w / 2, slack);
                    EXPECT_NEAR(pane.clip.center().y, h / 2, slack);
                    EXPECT_NEAR(pane.content.width / pane.content.height, source.aspect(), source.aspect() * 1e-9);
                    auto const share = insets(frame);
                    EXPECT_NEAR(pane.frame.top, share.top * pane.content.width, slack);
                    EXPECT_NEAR(pane.frame.bottom, share.bottom * pane.content.width, slack);
                    EXPECT_NEAR(pane.content.x - pane.clip.x, pane.frame.left, slack);
                    EXPECT_NEAR(pane.clip.maxX() - pane.content.maxX(), pane.frame.right, slack);
                    EXPECT_NEAR(pane.clip.maxY() - pane.content.maxY(), pane.frame.bottom, slack);
                }
            }
        }
    }
}

TEST(SinglePane, whatIsFilledIsThePaddedCanvasAndTheRecordingCoversAllThatFrameOrBandLeaveOpen) {
    double const slack = 1e-6;
    std::vector<ScreenStyle> styles{{}, {.inset = 0.02}, {.inset = 0.3}};
    for (auto const frame : allCases<DeviceFrame>()) styles.push_back({.frame = frame});
    for (auto style : styles) {
        for (Size2 const source : {hd, Size2{400, 900}, Size2{3000, 200}, Size2{1, 1}}) {
            for (Size2 const canvas : {hd, Size2{1080, 1920}, Size2{640, 360}, Size2{4000, 200}}) {
                for (double const padding : {0.0, 0.06, 0.3}) {
                    style.padding = padding;
                    SCOPED_TRACE(nameOf(style.frame));
                    auto const at = [&](double focus) {
                        return singlePane(source, canvas, style, ContentFit::fill, {focus, focus});
                    };
                    auto const pane = at(0.3);
                    auto const w = static_cast<double>(canvas.width);
                    auto const h = static_cast<double>(canvas.height);
                    expectNear(pane.clip, {padding * w, padding * h, (1 - 2 * padding) * w, (1 - 2 * padding) * h});
                    auto const opening = pane.opening();
                    EXPECT_GT(opening.width, 0);
                    EXPECT_GT(opening.height, 0);
                    EXPECT_LE(pane.content.x, opening.x + slack);
                    EXPECT_LE(pane.content.y, opening.y + slack);
                    EXPECT_GE(pane.content.maxX(), opening.maxX() - slack);
                    EXPECT_GE(pane.content.maxY(), opening.maxY() - slack);
                    double const over =
                        std::min(pane.content.width - opening.width, pane.content.height - opening.height);
                    EXPECT_NEAR(over, 0, slack) << "no larger than it must be";
                    EXPECT_NEAR(pane.content.width / pane.content.height, source.aspect(), source.aspect() * 1e-9);
                    EXPECT_NEAR(at(0).content.x, opening.x, slack) << "the edges that the focus names";
                    EXPECT_NEAR(at(0).content.y, opening.y, slack);
                    EXPECT_NEAR(at(1).content.maxX(), opening.maxX(), slack);
                    EXPECT_NEAR(at(1).content.maxY(), opening.maxY(), slack);
                    EXPECT_EQ(at(1).clip, pane.clip);
                }
            }
        }
    }
}

TEST(SinglePane, anInsetBandShrinksTheRecordingIntoItsPlaceButNeverBelowATwentieth) {
    auto const pane = singlePane(hd, hd, {.inset = 0.02}, ContentFit::fit, {});
    EXPECT_EQ(pane.clip, (CanvasRect{0, 0, 1920, 1080}));
    EXPECT_NEAR(pane.frame.top, 0.02 * 1920, 1e-9) << "the smaller side decides";
    EXPECT_NEAR(pane.content.width / pane.content.height, hd.aspect(), 1e-9);

    auto const thick = singlePane(hd, hd, {.inset = 0.6}, ContentFit::fit, {});
    EXPECT_NEAR(thick.content.width, 1920 * 0.05, 1e-9);

    auto const thin = singlePane(hd, hd, {.inset = 0.0004}, ContentFit::fit, {});
    EXPECT_EQ(thin.content, thin.clip);
}

TEST(SinglePane, aDeviceFrameTakesThePlaceOfTheBand) {
    ScreenStyle style{.padding = 0.05, .frame = DeviceFrame::browserDark};
    auto const framed = singlePane(hd, hd, style, ContentFit::fit, {});
    style.inset = 0.1;
    EXPECT_EQ(singlePane(hd, hd, style, ContentFit::fit, {}), framed);
}

}

}
