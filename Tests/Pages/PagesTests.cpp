// Shows each page of the window in both looks and two sizes, at the factor that Qt has in this run. With --store FOLDER
// it stores the small pictures that the suite compares with, with --shots FOLDER it takes the README's two.

#include "../Capture/TestDisplay.h"
#include "Film.h"
#include "PagePictures.h"
#include "PageStage.h"
#include "Places.h"
#include "TextFaults.h"

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
#include <string>
#include <vector>

using namespace tavaro;

namespace {

constexpr int skipped = 77;
constexpr int patience = 10'000; // milliseconds
QString const lightLook = QStringLiteral("light"), darkLook = QStringLiteral("dark");
QSize const usual{1400, 900}, smallest{1000, 640};
QDir const stored{QStringLiteral(TAVARO_PAGE_PICTURES)};
QString storeInto; // empty: nothing is stored

PageStage* stage = nullptr; // one for all, since Qt has its types once in a process

struct View {
    QString look;
    QSize size;
};
QString nameOf(Place const& place, View const& view) {
    return QStringLiteral("%1-%2-%3.png").arg(place.name, view.look).arg(view.size.width());
}

bool isAlike(PageDifference const& by) { return by.mean <= 4 && by.share <= 0.012; }

/// What is shown late is waited for.
void expectAsStored(QString const& name) {
    if (!stored.exists(name)) {
        ADD_FAILURE() << name.toStdString() << " is not stored: look at the pages, then ./dev pages accept";
        stage->settledPicture();
        return;
    }
    auto const wanted = QImage(stored.filePath(name)).convertToFormat(QImage::Format_RGB32);
    QImage shown;
    QElapsedTimer time;
    for (time.start(); time.elapsed() < patience; stage->run(50)) {
        shown = small(stage->picture());
        if (isAlike(difference(wanted, shown))) return;
    }
    auto const by = difference(wanted, shown);
    auto const sheet = QDir::current().filePath(QStringLiteral("page-") + name);
    comparison(wanted, shown).save(sheet);
    ADD_FAILURE() << name.toStdString() << " differs by " << by.mean << " in the mean, and plainly in "
                  << 100 * by.share << " % of its pixels; stored, shown and difference: " << sheet.toStdString();
}

/// Words that fade in are waited for.
void expectReadable() {
    std::vector<std::string> faults;
    QElapsedTimer time;
    for (time.start(); time.elapsed() < patience / 3; stage->run(100)) {
        faults = textFaults(stage->window(), stage->picture());
        if (faults.empty()) return;
    }
    for (auto const& fault : faults) ADD_FAILURE() << fault;
}

void look(Place const& place, View const& view) {
    SCOPED_TRACE(nameOf(place, view).toStdString());
    if (!storeInto.isEmpty()) {
        ASSERT_TRUE(small(stage->settledPicture())
                        .save(QDir(storeInto).filePath(nameOf(place, view)), "PNG", 0)); // packed well
        return;
    }
    expectAsStored(nameOf(place, view));
    expectReadable();
    for (auto const& complaint : stage->complaints()) ADD_FAILURE() << complaint;
}

void lookEverywhere(View const& view) {
    stage->goHome();
    stage->setLook(view.look);
    stage->resize(view.size);
    for (auto const& place : places(*stage)) {
        place.show(*stage);
        look(place, view);
        place.takeBack(*stage);
        stage->goHome();
    }
}

}

TEST(Pages, ofAnEmptyLibraryAndTheFirstStart) {
    for (auto const& size : {usual, smallest})
        for (auto const& name : {lightLook, darkLook}) {
            stage->setLook(name);
            stage->resize(size);
            look({QStringLiteral("empty-library"), {}}, {name, size});
            stage->press(QStringLiteral("Record"));
            stage->press(QStringLiteral("screen, "));
            look({QStringLiteral("first-take-1"), {}}, {name, size});
            for (auto const* step : {"2", "3"}) {
                stage->press(QStringLiteral("Next"));
                look({QStringLiteral("first-take-") + QLatin1String(step), {}}, {name, size});
            }
            for (int back = 0; back < 2; ++back) stage->press(QStringLiteral("Back"));
            stage->goHome();
        }
    stage->press(QStringLiteral("Record"));
    stage->press(QStringLiteral("Skip"));
    stage->fillLibrary();
}

TEST(Pages, areAsTheyWereWhenSomebodyLooked) {
    for (auto const& size : {usual, smallest})
        for (auto const& name : {lightLook, darkLook}) lookEverywhere({name, size});
}

namespace {

/// Where the keyboard is; a popup has it as a whole.
QQuickItem* focus() { return stage->window().activeFocusItem(); }

/// Whether the picture around the item shows that it has the keyboard.
bool isMarked(QQuickItem const& item, QImage const& before, QImage const& after) {
    constexpr double around = 6; // points, in which a ring is drawn
    auto const factor = before.devicePixelRatio();
    auto const place = item.mapRectToScene(item.boundingRect()).adjusted(-around, -around, around, around);
    auto const pixels = QRectF(place.topLeft() * factor, place.size() * factor).toAlignedRect() & before.rect();
    return before.copy(pixels) != after.copy(pixels);
}

std::string named(QQuickItem* item) {
    auto* const node = QAccessible::queryAccessibleInterface(item);
    return std::string(item->metaObject()->className()) + " “" +
           (node ? node->text(QAccessible::Name).toStdString() : std::string()) + "”";
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
    auto before = stage->settledPicture();
    for (int i = 0; i < most; ++i) {
        auto* const from = focus();
        stage->key(Qt::Key_Tab);
        auto* const at = focus();
        if (!reached.empty() && at == reached.front()) return reached;
        if (!at || at == from) {
            ADD_FAILURE() << "Tab leads nowhere from " << (from ? named(from) : "the start");
            return reached;
        }
        reached.push_back(at);
        auto const after = stage->picture();
        EXPECT_TRUE(isMarked(*at, before, after)) << named(at) << " does not show that it has the keyboard";
        before = after;
    }
    ADD_FAILURE() << "Tab does not come round in " << most << " steps";
    return reached;
}

void goThrough(Place const& place) {
    SCOPED_TRACE(place.name.toStdString());
    auto const reached = tabbedThrough();
    for (auto* const stop : stopsInFront())
        EXPECT_TRUE(std::ranges::find(reached, stop) != reached.end()) << "Tab does not lead to " << named(stop);
    if (reached.size() < 2) return;
    stage->key(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(focus(), reached.back()) << "Shift+Tab does not lead back";
}

}

TEST(Pages, areGoneThroughByTabWhichShowsWhereItIs) {
    if (!storeInto.isEmpty() || stage->window().effectiveDevicePixelRatio() != 1) GTEST_SKIP() << "at factor 1 only";
    stage->setLook(lightLook);
    stage->resize(smallest);
    for (auto const& place : places(*stage)) {
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
    stage->press(QStringLiteral("Record"));
    stage->press(QStringLiteral("Skip"));
    stage->fillLibrary();
    stage->resize({1280, 800});
    for (auto const& [name, place, looks] :
         {std::tuple{"studio-library.png", "library", lightLook}, {"studio-editor.png", "project-zoom", darkLook}}) {
        stage->goHome();
        stage->setLook(looks);
        for (auto const& each : places(*stage))
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
