#include "../TestDisplay.h"

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/X11/Private/ScreenGrabber.h>

#include <limits>

namespace tavaro {

using x11::ScreenGrabber;

namespace {

using Outcome = ScreenGrabber::Outcome;

std::uint32_t pixel(ScreenGrabber const& grabber, int x, int y) {
    auto const* const bytes = grabber.picture().row(y) + 4 * x;
    return static_cast<std::uint32_t>(bytes[2] << 16 | bytes[1] << 8 | bytes[0]);
}

/// Grabs, a moment of the clock after the last time, until the picture changed.
bool changes(ScreenGrabber& grabber) {
    return eventually([&] { return grabber.grab(0) == Outcome::changed; });
}

}

class ScreenGrabberTest : public DisplayTest {};

TEST_F(ScreenGrabberTest, anAreaShowsWhatIsDrawnInItAndNotThePointer) {
    auto const window = client->makeWindow({.frame = {0, 0, 640, 480}, .color = 0x102030});
    client->movePointer(110, 60);
    ScreenGrabber grabber(AreaSource{{100, 50, 201, 101}}, display->name());
    EXPECT_EQ(grabber.size(), (Size2{200, 100})) << "each side rounded down to even";
    ASSERT_EQ(grabber.grab(0), Outcome::changed);
    for (int y = 0; y < 100; ++y) {
        for (int x = 0; x < 200; ++x) ASSERT_EQ(pixel(grabber, x, y), 0x102030u) << x << "," << y;
    }
    EXPECT_EQ(grabber.grab(0), Outcome::unchanged);

    client->fill(window, {150, 70, 10, 5}, 0xff8000);
    ASSERT_TRUE(changes(grabber));
    EXPECT_EQ(pixel(grabber, 50, 20), 0xff8000u);
    EXPECT_EQ(pixel(grabber, 59, 24), 0xff8000u);
    EXPECT_EQ(pixel(grabber, 60, 24), 0x102030u);
    EXPECT_EQ(pixel(grabber, 50, 25), 0x102030u);

    client->fill(window, {0, 0, 99, 480}, 0xffffff); // beside the area
    EXPECT_FALSE(grabber.grab(0) == Outcome::changed && pixel(grabber, 0, 0) != 0x102030u);
}

TEST_F(ScreenGrabberTest, everyRandomDrawingIsInTheNextPicture) {
    auto const window = client->makeWindow({.frame = {0, 0, 640, 480}, .color = 0});
    ScreenGrabber grabber(DisplaySource{}, display->name());
    grabber.grab(0);
    unsigned const seed = 20;
    srand(seed);
    for (int round = 0; round < 60; ++round) {
        PixelRect const rect{rand() % 600, rand() % 440, 1 + rand() % 40, 1 + rand() % 40};
        std::uint32_t const color = 0x010101u * static_cast<std::uint32_t>(1 + round % 250);
        client->fill(window, rect, color);
        ASSERT_TRUE(changes(grabber)) << "seed " << seed << ", round " << round;
        ASSERT_EQ(pixel(grabber, rect.x, rect.y), color) << "seed " << seed << ", round " << round;
        ASSERT_EQ(pixel(grabber, rect.x + rect.width - 1, rect.y + rect.height - 1), color) << "round " << round;
    }
}

TEST_F(ScreenGrabberTest, onlyWhatWasDrawnIsToldAsChanged) {
    auto const window = client->makeWindow({.frame = {40, 30, 400, 300}, .windowClass = "Filmed", .color = 0});
    auto const expectNoMore = [&](CaptureSource const& source, PixelPoint const& corner) {
        ScreenGrabber grabber(source, display->name());
        EXPECT_EQ(grabber.grab(0), Outcome::changed);
        EXPECT_TRUE(grabber.changes()->isWhole());
        EXPECT_TRUE(eventually([&] { return grabber.grab(0) == Outcome::unchanged; }));
        client->fill(window, {50, 20, 10, 4}, 0xff8000);
        client->fill(window, {200, 120, 30, 2}, 0x0080ff); // a rectangle around both would be far larger
        auto told = *grabber.changes();
        EXPECT_TRUE(told.isEmpty());
        auto const columns = [&](int y) {
            auto const [begin, end] = told.columns((corner.y + y) / 2);
            return std::pair(begin - corner.x, end - corner.x);
        };
        EXPECT_TRUE(eventually([&] {
            grabber.grab(0);
            told.add(*grabber.changes());
            return columns(120) == std::pair(200, 230);
        }));
        EXPECT_EQ(columns(20), std::pair(50, 60));
        EXPECT_TRUE(told.columns((corner.y + 60) / 2).isEmpty());
    };
    expectNoMore(DisplaySource{}, {40, 30});
    expectNoMore(WindowSource{window}, {0, 0});
}

/// What is drawn beside what was reported is read with it, and must not be missed for longer than a second.
TEST_F(ScreenGrabberTest, aPictureReadInPartsIsToldWholeOnceInAWhile) {
    auto const window = client->makeWindow({.frame = {0, 0, 640, 480}, .color = 0});
    ScreenGrabber grabber(DisplaySource{}, display->name());
    double now = 10;
    auto const settle = [&] { return eventually([&] { return grabber.grab(now) == Outcome::unchanged; }); };
    auto const isToldWhole = [&](int y) {
        client->fill(window, {10, y, 10, 10}, 0xffffff);
        bool isWhole = false;
        EXPECT_TRUE(eventually([&] {
            bool const isChanged = grabber.grab(now) == Outcome::changed;
            isWhole = isWhole || grabber.changes()->isWhole();
            return isChanged;
        }));
        return isWhole;
    };
    grabber.grab(now);
    ASSERT_TRUE(settle());
    EXPECT_FALSE(isToldWhole(10));
    now += 1.1;
    EXPECT_TRUE(isToldWhole(30)) << "drawn on";
    ASSERT_TRUE(settle());
    EXPECT_FALSE(isToldWhole(50));
    ASSERT_TRUE(settle());
    now += 0.3;
    EXPECT_EQ(grabber.grab(now), Outcome::unchanged);
    EXPECT_TRUE(grabber.changes()->isWhole()) << "at rest";
    now += 0.3;
    EXPECT_EQ(grabber.grab(now), Outcome::unchanged);
    EXPECT_TRUE(grabber.changes()->isEmpty());
}

TEST_F(ScreenGrabberTest, aCoveredWindowIsShownWholeAndFollowedWhenItMoves) {
    auto const window = client->makeWindow({.frame = {50, 40, 200, 100}, .windowClass = "Filmed", .color = 0x00ff00});
    client->makeWindow({.frame = {60, 50, 300, 300}, .windowClass = "Other", .color = 0xff0000});
    ScreenGrabber grabber(WindowSource{window}, display->name());
    ASSERT_EQ(grabber.size(), (Size2{200, 100}));
    ASSERT_EQ(grabber.grab(0), Outcome::changed);
    EXPECT_EQ(pixel(grabber, 100, 50), 0x00ff00u);

    client->fill(window, {20, 30, 10, 10}, 0x0000ff); // under the other window
    ASSERT_TRUE(changes(grabber));
    EXPECT_EQ(pixel(grabber, 25, 35), 0x0000ffu);

    client->move(window, {300, 200, 200, 100});
    ASSERT_TRUE(eventually([&] { return grabber.grab(0), grabber.frame().x == 300; }));
    EXPECT_EQ(grabber.frame(), (PixelRect{300, 200, 200, 100}));
    EXPECT_EQ(pixel(grabber, 25, 35), 0x0000ffu);

    client->move(window, {300, 200, 120, 60});
    ASSERT_TRUE(eventually([&] { return grabber.grab(0), pixel(grabber, 150, 80) == 0; })) << "shrunk: black around";
    EXPECT_EQ(grabber.size(), (Size2{200, 100}));
    EXPECT_EQ(pixel(grabber, 10, 10), 0x00ff00u);
}

TEST_F(ScreenGrabberTest, theMarginForAWindowsOwnShadowIsNoPartOfIt) {
    auto const window = client->makeWindow({.frame = {50, 40, 200, 100}, .windowClass = "Filmed", .color = 0x222222});
    client->fill(window, {10, 30, 170, 50}, 0x00ff00);
    std::uint32_t const margin[] = {10, 20, 30, 20}; // left, right, top, bottom
    xcb_change_property(client->connection().get(), XCB_PROP_MODE_REPLACE, window,
                        client->connection().atom("_GTK_FRAME_EXTENTS"), XCB_ATOM_CARDINAL, 32, 4, margin);
    client->connection().synchronize();
    ScreenGrabber grabber(WindowSource{window}, display->name());
    EXPECT_EQ(grabber.frame(), (PixelRect{60, 70, 170, 50}));
    grabber.grab(0);
    EXPECT_EQ(pixel(grabber, 0, 0), 0x00ff00u);
    EXPECT_EQ(pixel(grabber, 169, 49), 0x00ff00u);
    client->move(window, {150, 140, 200, 100});
    EXPECT_TRUE(eventually([&] { return grabber.grab(0), grabber.frame().x == 160; }));
}

TEST_F(ScreenGrabberTest, aDesktopThatShrinksLeavesBlackAndKeepsTheRest) {
    client->makeWindow({.frame = {0, 0, 640, 480}, .color = 0x00ff00});
    ScreenGrabber grabber(DisplaySource{}, display->name());
    grabber.grab(0);
    client->resizeDesktop(320, 240);
    ASSERT_TRUE(eventually([&] { return grabber.grab(0), pixel(grabber, 400, 300) == 0; }));
    EXPECT_EQ(grabber.size(), (Size2{640, 480}));
    EXPECT_EQ(pixel(grabber, 319, 239), 0x00ff00u);
    EXPECT_EQ(pixel(grabber, 320, 239), 0u);
}

TEST_F(ScreenGrabberTest, menusOfTheFilmedWindowShowAndOtherProgramsDoNot) {
    auto const window = client->makeWindow({.frame = {50, 40, 200, 100}, .windowClass = "Filmed", .color = 0x00ff00});
    ScreenGrabber grabber(WindowSource{window}, display->name());
    grabber.grab(0);
    client->makeWindow({.frame = {150, 60, 60, 40}, .windowClass = "Other", .color = 0xff0000, .isPopup = true});
    auto const menu =
        client->makeWindow({.frame = {60, 50, 30, 200}, .windowClass = "Filmed", .color = 0xffff00, .isPopup = true});
    ASSERT_TRUE(eventually([&] { return grabber.grab(0), pixel(grabber, 20, 20) == 0xffff00u; }));
    EXPECT_EQ(pixel(grabber, 120, 30), 0x00ff00u);
    client->destroy(menu);
    EXPECT_TRUE(eventually([&] { return grabber.grab(0), pixel(grabber, 20, 20) == 0x00ff00u; }));
    client->destroy(window);
    EXPECT_TRUE(eventually([&] { return grabber.grab(0) == Outcome::lost; }));
}

TEST_F(ScreenGrabberTest, anAreaOfADisplayEndsWithItAndHasTheShapeThatWasAsked) {
    auto const frameOf = [&](AreaSource const& area) { return ScreenGrabber(area, display->name()).frame(); };
    EXPECT_EQ(frameOf({{600, 400, 320, 240}, "display-1"}), (PixelRect{600, 400, 40, 80}));
    EXPECT_EQ(frameOf({{-20, 0, 320, 100}, "display-1", AreaShape::wide}), (PixelRect{0, 0, 176, 100}));
    EXPECT_EQ(frameOf({{10, 20, 320, 400}, "display-1", AreaShape::square}), (PixelRect{10, 20, 320, 320}));
}

TEST_F(ScreenGrabberTest, aDisplayIsFollowedToWhereItIsPutAndAwayWhileItIsNotThere) {
    client->makeWindow({.frame = {0, 0, 320, 480}, .color = 0xff0000});
    client->makeWindow({.frame = {320, 0, 320, 480}, .color = 0x00ff00});
    PixelRect const left{0, 0, 320, 480}, right{320, 0, 320, 480};
    client->setDisplays({{"A", left}, {"B", right}});
    ScreenGrabber grabber(DisplaySource{"B"}, display->name());
    ScreenGrabber area(AreaSource{{10, 20, 100, 100}, "B"}, display->name());
    ScreenGrabber place(AreaSource{{330, 20, 100, 100}}, display->name());
    auto const shows = [&](std::uint32_t color) {
        return eventually([&] {
            return grabber.grab(0), area.grab(0), place.grab(0),
                   pixel(grabber, 50, 50) == color && pixel(area, 50, 50) == color;
        });
    };
    EXPECT_TRUE(shows(0x00ff00));

    client->setDisplays({{"A", left}});
    EXPECT_TRUE(eventually([&] { return grabber.grab(0) == Outcome::away && area.grab(0) == Outcome::away; }));
    EXPECT_EQ(pixel(grabber, 50, 50), 0x00ff00u) << "the last picture stays";
    EXPECT_NE(place.grab(0), Outcome::away) << "an area of the desktop belongs to no display";

    client->setDisplays({{"A", right}, {"B", left}});
    EXPECT_TRUE(shows(0xff0000));
    EXPECT_EQ(grabber.frame(), left);
    EXPECT_EQ(area.frame(), (PixelRect{10, 20, 100, 100}));
    EXPECT_EQ(place.frame(), (PixelRect{330, 20, 100, 100}));
    EXPECT_EQ(grabber.remark(), std::nullopt);

    client->setDisplays({{"A", right}, {"B", {0, 0, 200, 480}}});
    EXPECT_TRUE(eventually([&] { return grabber.grab(0), pixel(grabber, 250, 50) == 0; }));
    EXPECT_EQ(pixel(grabber, 199, 50), 0xff0000u);
    EXPECT_EQ(grabber.size(), (Size2{320, 480}));
    EXPECT_EQ(grabber.remark(),
              "The display became 200 × 480 pixels while it was filmed; the film keeps its 320 × 480, "
              "and what is missing is black.");
    EXPECT_EQ(area.remark(), std::nullopt);
}

TEST_F(ScreenGrabberTest, aDesktopThatIsScaledAnewWhileItIsFilmedIsSaid) {
    auto const scale = [&](std::string const& resources) {
        auto& connection = client->connection();
        xcb_change_property(connection.get(), XCB_PROP_MODE_REPLACE, connection.root(), XCB_ATOM_RESOURCE_MANAGER,
                            XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(resources.size()), resources.data());
        connection.synchronize();
    };
    scale("Xft.dpi:\t96\n");
    ScreenGrabber grabber(DisplaySource{}, display->name());
    EXPECT_EQ(grabber.remark(), std::nullopt);
    scale("Xft.dpi:\t144\n");
    EXPECT_EQ(grabber.remark(),
              "The desktop's scale went from 1 to 1.5 while it was filmed; the film's pointer has the "
              "size that it had at the start.");
    EXPECT_EQ(grabber.scaleFactor(), 1);
    display->kill();
    EXPECT_TRUE(eventually([&] { return grabber.grab(0) == Outcome::lost; }));
    EXPECT_EQ(grabber.remark(), std::nullopt) << "a display that is gone tells nothing";
}

TEST_F(ScreenGrabberTest, anApplicationShowsItsDialogsOverItsWindow) {
    client->makeWindow({.frame = {50, 40, 200, 100}, .windowClass = "Filmed", .color = 0x00ff00});
    ScreenGrabber grabber(ApplicationSource{"filmed"}, display->name());
    ASSERT_EQ(grabber.grab(0), Outcome::changed);
    client->makeWindow({.frame = {100, 80, 40, 40}, .windowClass = "Filmed", .color = 0x123456});
    EXPECT_TRUE(eventually([&] { return grabber.grab(0), pixel(grabber, 60, 50) == 0x123456u; }));
}

TEST_F(ScreenGrabberTest, anApplicationIsFilmedAsLongAsItHasAWindow) {
    auto const shows = [](ScreenGrabber& grabber, std::uint32_t color) {
        return eventually([&] { return grabber.grab(0), pixel(grabber, 60, 50) == color; });
    };
    auto const behind = client->makeWindow({.frame = {300, 40, 200, 100}, .windowClass = "Filmed", .color = 0xff0000});
    client->makeWindow({.frame = {50, 40, 200, 100}, .windowClass = "Other", .color = 0x999999});
    auto const front = client->makeWindow({.frame = {50, 40, 200, 100}, .windowClass = "Filmed", .color = 0x00ff00});
    ScreenGrabber grabber(ApplicationSource{"filmed"}, display->name());
    EXPECT_TRUE(shows(grabber, 0x00ff00));
    client->destroy(front);
    EXPECT_TRUE(shows(grabber, 0xff0000)) << "another of its windows, wherever that is";
    EXPECT_EQ(grabber.frame(), (PixelRect{300, 40, 200, 100}));
    client->destroy(behind);
    EXPECT_NE(grabber.grab(0), Outcome::lost);
    EXPECT_EQ(pixel(grabber, 60, 50), 0xff0000u) << "the last picture stays";
    auto const next = client->makeWindow({.frame = {10, 10, 100, 80}, .windowClass = "Filmed", .color = 0x0000ff});
    EXPECT_TRUE(shows(grabber, 0x0000ff));
    EXPECT_EQ(pixel(grabber, 150, 90), 0u) << "smaller than the picture: the rest is black";
    client->destroy(next);
    EXPECT_TRUE(eventually([&] { return grabber.grab(0) == Outcome::lost; }));
}

TEST_F(ScreenGrabberTest, aDrawingThatNobodyReportsIsSeenByTheCheck) {
    client->makeWindow({.frame = {0, 0, 640, 480}, .color = 0x808080});
    ScreenGrabber grabber(DisplaySource{}, display->name());
    grabber.grab(0);
    EXPECT_EQ(grabber.grab(1), Outcome::unchanged) << "the whole picture is compared, and is the same";
}

TEST_F(ScreenGrabberTest, sourcesThatCannotBeRecordedSayWhy) {
    auto const hidden = client->makeWindow({.frame = {0, 0, 50, 50}, .windowClass = "Hidden", .isMapped = false});
    auto const away = client->makeWindow({.frame = {2000, 0, 50, 50}, .windowClass = "Away"});
    using Kind = CaptureError::Kind;
    struct {
        CaptureSource source;
        std::string part;
        Kind kind = Kind::badSource;
    } const cases[] = {
        {AreaSource{{0, 0, 0, 100}}, "its size is zero"},
        {AreaSource{{700, 0, 100, 100}}, "outside the screen"},
        {AreaSource{{700, 0, 100, 100}, "display-1"}, "outside display-1"},
        {AreaSource{{std::numeric_limits<int>::max(), 0, 100, 100}, "display-1"}, "outside display-1"},
        {AreaSource{{0, 0, 100, 100}, "display-7"}, "There is no display “display-7”", Kind::noSuchSource},
        {DisplaySource{"display-7"}, "There is no display “display-7”", Kind::noSuchSource},
        {WindowSource{0x7fffffff}, "may have been closed", Kind::noSuchSource},
        {WindowSource{hidden}, "minimised or hidden"},
        {WindowSource{away}, "outside the screen"},
        {ApplicationSource{"Nowhere"}, "No application “Nowhere” has a window", Kind::noSuchSource},
    };
    for (auto const& [source, part, kind] : cases) {
        try {
            ScreenGrabber const grabber(source, display->name());
            ADD_FAILURE() << "recordable: " << part;
        } catch (CaptureError const& error) {
            EXPECT_EQ(error.kind, kind) << part;
            EXPECT_NE(std::string(error.what()).find(part), std::string::npos) << error.what();
        }
    }
}

TEST_F(ScreenGrabberTest, aServerThatDiesIsALoss) {
    ScreenGrabber grabber(DisplaySource{}, display->name());
    grabber.grab(0);
    client.reset();
    display->kill();
    EXPECT_TRUE(eventually([&] { return grabber.grab(0) == Outcome::lost; }));
    EXPECT_THROW(ScreenGrabber(DisplaySource{}, display->name()), CaptureError);
}

}
