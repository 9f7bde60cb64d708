// Shows each page of the window in both looks and two sizes, at the factor that Qt has in this run. With --store FOLDER
// it stores the small pictures that the suite compares with, with --whole FOLDER the pages as large as they are, to be
// looked at, with --shots FOLDER it takes the README's two.

#include "../Capture/TestDisplay.h"
#include "Film.h"
#include "PagePictures.h"
#include "PageStage.h"
#include "Places.h"
#include "ReachFaults.h"
#include "TextFaults.h"

#include <Tavaro/Studio/Style/ThemeColors.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QStyleHints>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string>
#include <vector>

using namespace tavaro;
using testing::IsEmpty;

namespace {

constexpr int skipped = 77;
constexpr int patience = 10'000; // milliseconds
QString const lightLook = QStringLiteral("light"), darkLook = QStringLiteral("dark");
QSize const usual{1400, 900}, smallest{1000, 640};
QDir const stored{QStringLiteral(TAVARO_PAGE_PICTURES)};
QString storeInto, storeWholeInto; // empty: nothing is stored

PageStage* stage = nullptr; // one for all, since Qt has its types once in a process
std::vector<Place> all;     // of the filled library, once it is

enum class Damaged { none, one };

void fillLibrary(Damaged damaged = Damaged::one) {
    if (!all.empty()) return;
    stage->press(QStringLiteral("Record"));
    stage->press(QStringLiteral("Skip"));
    stage->fillLibrary();
    if (damaged == Damaged::one) stage->addDamagedProject();
    all = places(*stage);
}

bool isAtFactorOne() { return stage->window().effectiveDevicePixelRatio() == 1; }

QString nameOf(QString const& place, QString const& look) {
    return QStringLiteral("%1-%2-%3.png").arg(place, look).arg(stage->window().width());
}

bool isAlike(PageDifference const& by) { return by.mean <= 4 && by.share <= 0.012; }

/// What is shown late is waited for, but not with every picture where nothing is as it was.
void expectAsStored(QString const& name) {
    static int differing = 0;
    constexpr int many = 3;
    if (!stored.exists(name)) {
        ADD_FAILURE() << name.toStdString() << " is not stored: look at the pages, then ./dev pages accept";
        return;
    }
    auto const wanted = QImage(stored.filePath(name)).convertToFormat(QImage::Format_RGB32);
    QImage shown;
    QElapsedTimer time;
    for (time.start(); time.elapsed() < (differing < many ? patience : patience / 20); stage->run(30)) {
        shown = small(stage->picture());
        if (isAlike(difference(wanted, shown))) return;
    }
    ++differing;
    auto const by = difference(wanted, shown);
    auto const sheet = QDir::current().filePath(QStringLiteral("page-") + name);
    comparison(wanted, shown).save(sheet);
    ADD_FAILURE() << name.toStdString() << " differs by " << by.mean << " in the mean, and plainly in "
                  << 100 * by.share << " % of its pixels; stored, shown and difference: " << sheet.toStdString();
}

/// What fades in or goes to its place is waited for.
void expectReadableAndReachable() {
    std::vector<std::string> faults;
    QElapsedTimer time;
    for (time.start(); time.elapsed() < patience / 3; stage->run(100)) {
        faults = textFaults(stage->window(), stage->picture());
        std::ranges::move(reachFaults(stage->window()), std::back_inserter(faults));
        if (faults.empty()) return;
    }
    for (auto const& fault : faults) ADD_FAILURE() << fault;
}

bool isStoring() { return !storeInto.isEmpty() || !storeWholeInto.isEmpty(); }

void store(QString const& name) {
    constexpr int packedWell = 0;
    auto const picture = stage->settledPicture();
    auto const saved = [&](QImage const& image, QString const& folder) {
        return folder.isEmpty() || image.save(QDir(folder).filePath(name), "PNG", packedWell);
    };
    EXPECT_TRUE(saved(small(picture), storeInto) && saved(picture, storeWholeInto));
}

void lookAt(QString const& place, QString const& look) {
    stage->setLook(look);
    auto const name = nameOf(place, look);
    SCOPED_TRACE(name.toStdString());
    if (isStoring()) return store(name);
    stage->settle();
    if (isAtFactorOne()) expectAsStored(name); // Qt rounds otherwise at others
    expectReadableAndReachable();
    EXPECT_THAT(rowsInLayouts(*stage->window().contentItem()), IsEmpty());
    for (auto const& complaint : stage->complaints()) ADD_FAILURE() << complaint;
}

void lookAt(QString const& place) {
    for (auto const& look : {lightLook, darkLook}) lookAt(place, look);
}

}

TEST(Pages, ofAnEmptyLibraryAndTheFirstStart) {
    for (auto const& size : {usual, smallest}) {
        stage->resize(size);
        lookAt(QStringLiteral("empty-library"));
        stage->press(QStringLiteral("Record"));
        stage->press(QStringLiteral("screen, "));
        lookAt(QStringLiteral("first-take-1"));
        for (auto const* step : {"2", "3"}) {
            stage->press(QStringLiteral("Next"));
            lookAt(QStringLiteral("first-take-") + QLatin1String(step));
        }
        for (int back = 0; back < 2; ++back) stage->press(QStringLiteral("Back"));
        stage->goHome();
    }
}

TEST(Pages, areAsTheyWereWhenSomebodyLooked) {
    fillLibrary();
    for (auto const& size : {usual, smallest}) {
        stage->resize(size);
        for (auto const& place : all) {
            place.show(*stage);
            lookAt(place.name);
            place.takeBack(*stage);
            stage->goHome();
        }
    }
}

namespace {

/// Where the keyboard is; a popup has it as a whole.
QQuickItem* focus() { return stage->window().activeFocusItem(); }

QRect pixelsAround(QQuickItem const& item, QImage const& picture) {
    constexpr double around = 6; // points, in which a ring is drawn
    auto const factor = picture.devicePixelRatio();
    auto const place = item.mapRectToScene(item.boundingRect()).adjusted(-around, -around, around, around);
    return QRectF(place.topLeft() * factor, place.size() * factor).toAlignedRect() & picture.rect();
}

/// Where a page has scrolled, what had the keyboard before may have had its ring in the same place.
bool hasRing(QQuickItem const& item, QImage const& picture) {
    constexpr int least = 40; // pixels
    auto const part = picture.copy(pixelsAround(item, picture));
    int found = 0;
    for (int y = 0; y < part.height(); ++y)
        for (int x = 0; x < part.width(); ++x) found += part.pixelColor(x, y) == ThemeColors::light().focus;
    return found >= least;
}

/// Whether the picture around the item shows that it has the keyboard.
bool isMarked(QQuickItem const& item, QImage const& before, QImage const& after) {
    auto const pixels = pixelsAround(item, after);
    return before.copy(pixels) != after.copy(pixels) || hasRing(item, after);
}

/// What Tab has to lead to: everything that wants it, but what arrows lead to in a list.
void collectStops(QQuickItem* item, std::vector<QQuickItem*>& stops) {
    if (!item->isVisible() || !item->isEnabled()) return;
    if (item->activeFocusOnTab()) stops.push_back(item);
    if (item->inherits("QQuickItemView") && item->activeFocusOnTab()) return;
    for (auto* child : item->childItems()) collectStops(child, stops);
}

/// Of the dialog that is in front of all, or else of the page.
std::vector<QQuickItem*> stopsInFront() {
    QQuickItem* front = stage->window().contentItem();
    for (auto* item = focus(); item; item = item->parentItem())
        if (item->inherits("QQuickPopupItem")) front = item;
    std::vector<QQuickItem*> stops;
    collectStops(front, stops);
    return stops;
}

/// Until it comes round; what it led to.
std::vector<QQuickItem*> tabbedThrough() {
    constexpr int most = 150;
    std::vector<QQuickItem*> reached;
    stage->settle();
    auto before = stage->picture();
    for (int i = 0; i < most; ++i) {
        auto* const from = focus();
        stage->key(Qt::Key_Tab);
        auto* const at = focus();
        if (!reached.empty() && at == reached.front()) return reached;
        if (!at || at == from) {
            ADD_FAILURE() << "Tab leads nowhere from " << (from ? described(*from) : "the start");
            return reached;
        }
        reached.push_back(at);
        auto const after = stage->picture();
        EXPECT_TRUE(isMarked(*at, before, after)) << described(*at) << " does not show that it has the keyboard";
        EXPECT_THAT(focusFaults(stage->window(), *at), IsEmpty());
        before = after;
    }
    ADD_FAILURE() << "Tab does not come round in " << most << " steps";
    return reached;
}

void goThrough(Place const& place) {
    SCOPED_TRACE(place.name.toStdString());
    auto const reached = tabbedThrough();
    for (auto* const stop : stopsInFront()) {
        auto const isIn = [&](QQuickItem* each) { return each == stop || stop->isAncestorOf(each); };
        EXPECT_TRUE(std::ranges::any_of(reached, isIn)) << "Tab does not lead to " << described(*stop);
    }
    if (reached.size() < 2) return;
    stage->key(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(focus(), reached.back()) << "Shift+Tab does not lead back";
}

}

TEST(Pages, areGoneThroughByTabWhichShowsWhereItIs) {
    if (isStoring()) GTEST_SKIP() << "what is stored is pictures";
    fillLibrary();
    stage->setLook(lightLook);
    stage->resize(smallest);
    for (auto const& place : all) {
        if (place.tab == Tab::doesNot) continue;
        place.show(*stage);
        goThrough(place);
        place.takeBack(*stage);
        stage->goHome();
    }
}

namespace {

/// For the README: what somebody who works sees.
int takeShots(QDir const& folder) {
    fillLibrary(Damaged::none);
    stage->resize({1280, 800});
    for (auto const& [name, place, looks] :
         {std::tuple{"studio-library.png", "library", lightLook}, {"studio-editor.png", "project-zoom", darkLook}}) {
        stage->goHome();
        stage->setLook(looks);
        for (auto const& each : all)
            if (each.name == QLatin1String(place)) each.show(*stage);
        for (int edge = 0; edge < 4; ++edge) stage->key(Qt::Key_Down); // into the film, where it is shown
        if (!stage->settledPicture().save(folder.filePath(QLatin1String(name)))) return 1;
        std::printf("%s\n", qPrintable(folder.filePath(QLatin1String(name))));
    }
    return 0;
}

QString option(QStringList const& arguments, char const* name) {
    auto const at = arguments.indexOf(QLatin1String(name));
    return at >= 0 ? arguments.value(at + 1) : QString();
}

}

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    for (auto const* name : {"WAYLAND_DISPLAY", "PULSE_SERVER", "DISPLAY", "DBUS_SESSION_BUS_ADDRESS"}) qunsetenv(name);
    if (!TestDisplay::isInstalled()) return skipped;
    testing::InitGoogleTest(&argc, argv);
    QGuiApplication const application(argc, argv);
    QAccessible::setActive(true);
    QGuiApplication::styleHints()->setCursorFlashTime(0); // pictures of a text cursor are alike
    auto const arguments = QGuiApplication::arguments();
    storeInto = option(arguments, "--store");
    storeWholeInto = option(arguments, "--whole");
    try {
        PageStage only;
        stage = &only;
        if (auto const folder = option(arguments, "--shots"); !folder.isEmpty()) return takeShots(QDir(folder));
        return RUN_ALL_TESTS();
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
