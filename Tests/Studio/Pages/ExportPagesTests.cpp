#include "../Exports/TestExports.h"
#include "PageEngine.h"

#include <Tavaro/Studio/Exports/ExportForm.h>
#include <Tavaro/Studio/Exports/ExportRecord.h>
#include <Tavaro/Studio/Exports/ExportTypes.h>
#include <Tavaro/Studio/Library/Stills.h>

#include <QAccessible>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>

#include <optional>

using namespace tavaro;

namespace {

/// A page of exports in a window without a display.
class ExportPages : public ExportsTest {
protected:
    void show(char const* file, QVariantMap const& properties) {
        registerExportTypes();
        pageEngine().addImageProvider(QStringLiteral("stills"), new Stills);
        view.emplace(&pageEngine(), nullptr);
        view->setResizeMode(QQuickView::SizeRootObjectToView);
        view->resize(760, 480);
        view->setInitialProperties(properties);
        view->setSource(QUrl::fromLocalFile(QStringLiteral(TAVARO_PAGES "/") + QString::fromUtf8(file)));
        view->show();
        view->requestActivate();
        waitFor([&] { return view->isActive() && view->isExposed(); });
    }

    std::optional<QQuickView> view;
};

QString nameOf(QQuickItem const* item) {
    auto* const node = QAccessible::queryAccessibleInterface(const_cast<QQuickItem*>(item));
    return node ? node->text(QAccessible::Name) : QString();
}

}

TEST_F(ExportPages, aRowWhoseButtonTabLeadsToIsInSight) {
    ExportMemory memory;
    for (int i = 0; i < 12; ++i)
        memory.exports.push_back({.id = UUID::random(),
                                  .package = take.package.url().string(),
                                  .name = "Tour",
                                  .state = ExportState::done,
                                  .path = "/films/" + std::to_string(i) + ".mp4"});
    memory.write(settings().memory);
    ExportQueue exports(queue, application, settings());
    waitFor([&] { return exports.count() == 12; });
    show("ExportsPage.qml", {{QStringLiteral("queue"), QVariant::fromValue(&exports)}});
    QRectF const page(QPointF(), view->size());
    bool isLast = false;
    for (int i = 0; i < 40 && !isLast; ++i) {
        QTest::keyClick(&*view, Qt::Key_Tab);
        QTest::qWait(30); // the rows that come into sight are made
        auto const* const item = view->activeFocusItem();
        ASSERT_NE(item, nullptr);
        auto const place = item->mapRectToScene(item->boundingRect());
        EXPECT_TRUE(page.contains(place)) << nameOf(item).toStdString() << " is at " << place.y();
        isLast = nameOf(item) == QLatin1String("Show 11.mp4 in its folder");
    }
    EXPECT_TRUE(isLast);
    view.reset(); // before its queue
}

TEST_F(ExportPages, whatCanBeReadInAFilmIsInItsRowAndForWhoCannotSeeIt) {
    ExportMemory const memory{.exports = {{.id = UUID::random(),
                                           .package = take.package.url().string(),
                                           .name = "Tour",
                                           .state = ExportState::done,
                                           .path = "/films/tour.mp4",
                                           .checksFilm = true,
                                           .checked = "1 private text can be read in it.\n0:01–0:02: Email a•••",
                                           .isLegible = true}}};
    memory.write(settings().memory);
    ExportQueue exports(queue, application, settings());
    waitFor([&] { return exports.count() == 1; });
    show("ExportsPage.qml", {{QStringLiteral("queue"), QVariant::fromValue(&exports)}});
    auto const isSome = [&](auto const& isIt) {
        std::vector<QQuickItem*> items{view->rootObject()};
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (isIt(*items[i])) return true;
            for (auto* const child : items[i]->childItems()) items.push_back(child);
        }
        return false;
    };
    waitFor([&] {
        return isSome([](QQuickItem& item) {
            return nameOf(&item).endsWith(QStringLiteral("can be read in it.\n0:01–0:02: Email a•••"));
        });
    });
    waitFor([&] {
        return isSome([](QQuickItem& item) {
            return item.property("text").toString().contains(QStringLiteral("Email a•••")) && item.height() > 20;
        });
    });
    view.reset(); // before its queue
}

TEST_F(ExportPages, aRateThatIsNotAmongTheUsualIsShown) {
    std::shared_ptr<OpenProject> open;
    application.projects().open(take.package.url(), [&](auto const& outcome) { open = outcome.value(); });
    waitFor([&] { return open != nullptr; });
    EditorSession session(queue, open);
    ExportQueue exports(queue, application, settings());
    ExportForm form(queue, application.preferences(), exports);
    form.begin(&session);
    form.setPlace(QStringLiteral("custom"));
    show("ExportCustom.qml", {{QStringLiteral("form"), QVariant::fromValue(&form)}});
    QQuickItem* quality = nullptr;
    for (auto* const item : view->rootObject()->findChildren<QQuickItem*>())
        if (nameOf(item) == QLatin1String("Quality")) quality = item;
    ASSERT_NE(quality, nullptr);
    auto const shown = [&] { return quality->property("displayText").toString().toStdString(); };
    for (auto const& [kilobits, text] : {std::pair{95'500, "95.5 Mbit/s"},
                                         {80'000, "80 Mbit/s"},
                                         {2500, "2.5 Mbit/s"},
                                         {0, "As the size needs it"},
                                         {12'000, "12 Mbit/s"}}) {
        form.setKilobits(kilobits);
        EXPECT_EQ(shown(), text);
    }
    view.reset(); // before its form
}
