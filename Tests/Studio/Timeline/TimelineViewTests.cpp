#include <Tavaro/Studio/Timeline/RulerTicks.h>
#include <Tavaro/Studio/Timeline/TimelineView.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace tavaro;

namespace {

TimelineView viewOf(double seconds, double width = 1000) {
    TimelineView view;
    view.resize(width, 300);
    view.setContent({0, seconds});
    return view;
}

}

TEST(TimelineView, theWholeFilmIsInViewUntilSomebodyZooms) {
    auto view = viewOf(600);
    for (double const seconds : {600.0, 30.0, 3 * 3600.0, 0.0}) {
        view.setContent({-2, seconds + 5});
        EXPECT_LE(view.visible().start, -2) << seconds;
        EXPECT_GE(view.visible().end(), seconds + 3) << seconds;
    }
    view.setContent({0, 600});
    view.zoom(4, 500);
    auto const scale = view.secondsPerPoint();
    view.setContent({0, 1200});
    EXPECT_EQ(view.secondsPerPoint(), scale);
    view.zoom(1e-9, 500);
    EXPECT_TRUE(view.fits());
    EXPECT_LE(view.visible().start, 0);
    EXPECT_GE(view.visible().end(), 1200);
}

TEST(TimelineView, zoomKeepsTheTimeUnderThePointer) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> places(TimelineView::headerWidth, 1000), factors(0.5, 2);
    auto view = viewOf(3600);
    view.zoom(20, 600);
    for (int i = 0; i < 400; ++i) {
        double const x = places(random), factor = factors(random), before = view.time(x),
                     scale = view.secondsPerPoint();
        view.zoom(factor, x);
        if (view.secondsPerPoint() * factor != scale) continue; // held back by the finest or coarsest scale
        auto const shown = view.visible();
        bool const isAtAnEnd = shown.start <= 0 || shown.end() >= 3600;
        if (!isAtAnEnd) {
            ASSERT_NEAR(view.time(x), before, 1e-6 * shown.duration) << i;
        }
    }
    for (double const factor : std::initializer_list<double>{0, -1, NAN, INFINITY}) {
        auto const before = view;
        view.zoom(factor, 500);
        EXPECT_EQ(view, before);
    }
}

TEST(TimelineView, noWayOfMovingItLosesTheFilm) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> any(-1, 1);
    auto view = viewOf(120);
    view.setLanesHeight(700);
    for (int i = 0; i < 2000; ++i) {
        switch (i % 5) {
        case 0: view.scroll(any(random) * 5000, any(random) * 900); break;
        case 1: view.zoom(std::exp(any(random) * 3), 500 + any(random) * 700); break;
        case 2: view.follow(60 + any(random) * 200); break;
        case 3: view.show({any(random) * 200, std::abs(any(random)) * 90}); break;
        default: view.reveal(60 + any(random) * 100);
        }
        auto const shown = view.visible();
        ASSERT_LT(shown.start, 120) << i;
        ASSERT_GT(shown.end(), 0) << i;
        ASSERT_GE(view.scrollY(), 0) << i;
        ASSERT_LE(view.scrollY(), 700 - (300 - TimelineView::rulerHeight)) << i;
    }
}

TEST(TimelineView, aPlayingFilmTurnsThePageAndStaysInView) {
    auto view = viewOf(600);
    view.zoom(20, TimelineView::headerWidth);
    int pages = 0;
    for (double t = 0; t < 600; t += 0.05) {
        auto const before = view.start();
        view.follow(t);
        pages += view.start() != before;
        auto const shown = view.visible();
        ASSERT_TRUE(t >= shown.start && t <= shown.end()) << t;
    }
    EXPECT_GT(pages, 10);
    EXPECT_LT(pages, 30);
}

TEST(RulerTicks, labelsHaveRoomAtEveryScaleAndNameTheirTime) {
    for (double scale = TimelineView::finestScale; scale < 400; scale *= 1.3) {
        RulerScale const ruler{.secondsPerPoint = scale, .framesPerSecond = 30};
        TimeRange const visible{1234.5, 1200 * scale};
        auto const ticks = rulerTicks(visible, ruler);
        ASSERT_GE(ticks.size(), 2u) << scale;
        ASSERT_LE(ticks.size(), 200u) << scale;
        double last = -1;
        int labels = 0;
        for (auto const& tick : ticks) {
            ASSERT_GE(tick.time, visible.start - 1e-9);
            ASSERT_LE(tick.time, visible.end());
            if (tick.label.empty()) continue;
            if (last >= 0) {
                ASSERT_GE((tick.time - last) / scale, ruler.labelSpacing - 1e-6) << scale;
            }
            last = tick.time;
            ++labels;
        }
        ASSERT_GE(labels, 1) << scale;
    }
    auto const labels = [](TimeRange const& visible, double scale) {
        std::string text;
        for (auto const& tick : rulerTicks(visible, {.secondsPerPoint = scale, .framesPerSecond = 30})) {
            if (!tick.label.empty()) text += tick.label + " ";
        }
        return text;
    };
    EXPECT_EQ(labels({-3, 20}, 0.05), "0:00 0:05 0:10 0:15 ");
    EXPECT_EQ(labels({3599, 62}, 0.3), "1:00:00 1:00:30 1:01:00 ");
    EXPECT_EQ(labels({1, 0.4}, 0.001), "0:01.00 0:01.05 0:01.10 ");
}
